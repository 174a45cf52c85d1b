#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace qorix {

// Letter case as protocols and documents mean it: that of ASCII's letters, whatever the user's
// language is. The C library's functions follow the locale, and Turkish has letters of its own.

constexpr bool isAsciiDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isAsciiLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

/// Any other character is answered as it is.
constexpr char asciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char asciiUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

inline std::string asciiLower(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    c = asciiLower(c);
  }
  return result;
}

inline std::string asciiUpper(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    c = asciiUpper(c);
  }
  return result;
}

constexpr bool equalIgnoringCase(char a, char b) { return asciiLower(a) == asciiLower(b); }

constexpr bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return equalIgnoringCase(x, y); });
}

constexpr bool startsWithIgnoringCase(std::string_view text, std::string_view start) {
  return equalIgnoringCase(text.substr(0, start.size()), start);
}

constexpr bool containsIgnoringCase(std::string_view text, std::string_view part) {
  return std::search(text.begin(), text.end(), part.begin(), part.end(),
                     [](char x, char y) { return equalIgnoringCase(x, y); }) != text.end() ||
         part.empty();
}

}  // namespace qorix
