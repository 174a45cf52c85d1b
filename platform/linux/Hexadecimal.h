#pragma once

#include <string>

namespace qorix {

/// Appends `c` as two hexadecimal digits.
inline void appendHexadecimal(std::string& text, char c) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  text += kDigits[byte >> 4];
  text += kDigits[byte & 15];
}

}  // namespace qorix
