#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qorix {

/// The items between the commas of `text`, each without the spaces and tabs around it; empty items
/// are left out. Nothing else separates or is trimmed: line breaks, quotes and brackets stay.
std::vector<std::string> splitAtCommas(std::string_view text);

}  // namespace qorix
