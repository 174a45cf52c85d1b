#pragma once

#include <string_view>

#include "platform/Value.h"

namespace qorix {

/// The items between the commas of `text`, each without the spaces and tabs around it; empty items
/// are left out. Nothing else separates or is trimmed: line breaks, quotes and brackets stay.
Array splitAtCommas(std::string_view text);

}  // namespace qorix
