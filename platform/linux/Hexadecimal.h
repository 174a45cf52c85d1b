#pragma once

#include <string>

namespace qorix {

/// Appends `c` as two hexadecimal digits.
inline void appendHexadecimal(std::string& text, char c) {
  constexpr char kHexadecimalDigits[] = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  text += kHexadecimalDigits[byte >> 4];
  text += kHexadecimalDigits[byte & 15];
}

}  // namespace qorix
