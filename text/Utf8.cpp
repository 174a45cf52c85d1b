#include "text/Utf8.h"

#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace qorix {

namespace {

bool isWordOfAscii(const char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return (word & 0x8080808080808080U) == 0;
}

void skipAscii(std::string_view& text) {
  while (text.size() >= sizeof(std::uint64_t) && isWordOfAscii(text.data())) {
    text.remove_prefix(sizeof(std::uint64_t));
  }
  const auto* const end = std::ranges::find_if_not(text, isAscii);
  text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
}

}  // namespace

bool isUtf8(std::string_view text) {
  for (skipAscii(text); !text.empty(); skipAscii(text)) {
    // No character has an ASCII byte in it.
    const auto* const end = std::ranges::find_if(text, isAscii);
    if (!utf8::is_valid(text.begin(), end)) {
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
  }
  return true;
}

}  // namespace qorix
