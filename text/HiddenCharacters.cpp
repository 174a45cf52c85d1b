#include "text/HiddenCharacters.h"

#include <utf8.h>

#include <algorithm>
#include <array>

namespace qorix {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Sorted. The joiners U+200C and U+200D are left out: many languages cannot be read without them,
// and they move nothing.
constexpr std::array<Range, 15> kHidden = {{{0x00, 0x1F},
                                            {0x7F, 0x9F},
                                            {0xAD, 0xAD},
                                            {0x61C, 0x61C},
                                            {0x180E, 0x180E},
                                            {0x200B, 0x200B},
                                            {0x200E, 0x200F},
                                            {0x2028, 0x202E},
                                            {0x2060, 0x206F},
                                            {0xFEFF, 0xFEFF},
                                            {0xFFF9, 0xFFFB},
                                            {0x13430, 0x1343F},
                                            {0x1BCA0, 0x1BCA3},
                                            {0x1D173, 0x1D17A},
                                            {0xE0000, 0xE0FFF}}};

bool isHidden(char32_t character) {
  const auto* range = std::ranges::lower_bound(kHidden, character, {}, &Range::last);
  return range != kHidden.end() && range->first <= character;
}

/// What the first byte of a character says of its length.
std::size_t announcedSize(char lead) {
  const auto byte = static_cast<unsigned char>(lead);
  return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

}  // namespace

LeadingCharacter leadingCharacter(std::string_view text) {
  const std::string_view first = text.substr(0, announcedSize(text.front()));
  if (!utf8::is_valid(first.begin(), first.end())) {
    return {1, true};
  }
  return {first.size(), isHidden(utf8::unchecked::peek_next(first.begin()))};
}

}  // namespace qorix
