#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qorix {

/// The first 100 characters of a text (UTF-8) that has more than 500; nothing for a shorter one.
/// Characters are UTF-16 units; half of a pair at the cut is shown as U+FFFD.
std::optional<std::string> beginningOfLongText(std::string_view text);

}  // namespace qorix
