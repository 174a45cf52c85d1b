#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "definition/XmlDocument.h"
#include "definition/XmlSourceMap.h"

namespace qorix {

/// Does the work of `XmlDocument::parse`. `sourceMap` and `omission` are null if nobody wants them.
std::optional<XmlDocument> readXml(std::string_view text, XmlSourceMap* sourceMap,
                                   const XmlOmission* omission, std::size_t pieceSize);

}  // namespace qorix
