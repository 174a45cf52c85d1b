#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "definition/XmlDocument.h"
#include "definition/XmlSourceMap.h"

namespace qorix {

/// Does the work of `XmlDocument::parse`. `sourceMap` is null if nobody wants it.
std::optional<XmlDocument> readXml(std::string_view text, XmlSourceMap* sourceMap,
                                   std::size_t pieceSize);

}  // namespace qorix
