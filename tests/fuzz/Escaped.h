#pragma once

#include <string>
#include <string_view>

namespace qorix::fuzz {

/// The text as the content of an element that a reader turns back into the text.
inline std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '\r':
        result += "&#13;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

}  // namespace qorix::fuzz
