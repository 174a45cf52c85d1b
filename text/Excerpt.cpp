#include "text/Excerpt.h"

#include <utf8.h>

#include <algorithm>
#include <cstddef>

namespace qorix {

namespace {

constexpr std::size_t kLongestTextShownInFull = 500;
constexpr std::size_t kExcerptLength = 100;

// The leading part of `text` that holds `units` UTF-16 units, all of it when it is shorter.
std::u16string leadingUnits(std::string_view text, std::size_t units) {
  // A unit is at most three bytes long, and a character at most four.
  const auto enough = text.substr(0, 3 * units + 4);
  const auto valid = utf8::find_invalid(enough.begin(), enough.end());
  std::u16string result = utf8::utf8to16(std::string(enough.begin(), valid));
  result.resize(std::min(units, result.size()));
  return result;
}

}  // namespace

std::optional<std::string> beginningOfLongText(std::string_view text) {
  if (leadingUnits(text, kLongestTextShownInFull + 1).size() <= kLongestTextShownInFull) {
    return std::nullopt;
  }
  std::u16string beginning = leadingUnits(text, kExcerptLength);
  if ((beginning.back() & 0xFC00) == 0xD800) {
    beginning.back() = u'\uFFFD';
  }
  return utf8::utf16to8(beginning);
}

}  // namespace qorix
