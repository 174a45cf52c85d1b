#pragma once

#include <string>

namespace qorix {

inline constexpr char kHexadecimalDigits[] = "0123456789ABCDEF";

/// Appends `c` as two digits.
inline void appendHexadecimal(std::string& text, char c) {
  const auto byte = static_cast<unsigned char>(c);
  text += kHexadecimalDigits[byte >> 4];
  text += kHexadecimalDigits[byte & 15];
}

}  // namespace qorix
