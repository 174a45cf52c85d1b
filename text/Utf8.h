#pragma once

#include <string_view>

namespace qorix {

/// `char` has a sign on some processors only.
constexpr bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

/// Whether the text is UTF-8. Made for long texts that are mostly ASCII.
bool isUtf8(std::string_view text);

}  // namespace qorix
