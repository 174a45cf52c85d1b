#include "tools/common/Wording.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "text/HiddenCharacters.h"

namespace qorix::tools {

namespace {

constexpr std::size_t kLongest = 80;  // bytes of a text that is shown whole

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  std::size_t at = 0;
  while (at < std::min(text.size(), kLongest)) {
    const auto [size, isHidden] = leadingCharacter(text.substr(at));
    const bool isUtf8 = !isHidden || size > 1 || static_cast<unsigned char>(text[at]) < 0x80U;
    shown += !isUtf8 ? "\uFFFD" : isHidden ? " " : text.substr(at, size);
    at += size;
  }
  return at < text.size() ? shown + "..." : shown;
}

std::string inQuotes(std::string_view text) { return '"' + printable(text) + '"'; }

std::size_t lengthOf(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n\f\v";
  const auto begin = text.find_first_not_of(kBlanks);
  return begin == text.npos ? std::string_view()
                            : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::string numberText(double number) {
  std::array<char, 32> text{};
  const auto format = std::chars_format::general;
  return {text.data(), std::to_chars(text.begin(), text.end(), number, format, 15).ptr};
}

std::string sizeText(double width, double height) {
  return numberText(width) + " x " + numberText(height);
}

}  // namespace qorix::tools
