#pragma once

#include <string_view>

namespace qorix {

/// Whether the text is UTF-8. Made for long texts that are mostly ASCII.
bool isUtf8(std::string_view text);

}  // namespace qorix
