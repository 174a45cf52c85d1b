#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/Utf8.h"

namespace qorix {
namespace {

/// The text at every place in a word, and between other characters.
void expectUtf8(const std::string& text, bool isValid) {
  for (std::size_t before = 0; before < 17; ++before) {
    for (std::size_t behind = 0; behind < 9; ++behind) {
      const std::string dots = std::string(before, '.').append(text).append(behind, '.');
      EXPECT_EQ(isUtf8(dots), isValid) << dots;
    }
  }
}

TEST(Utf8Test, whatUnicodeHasIsUtf8) {
  for (const std::string& text : std::vector<std::string>{
           "", "text", "\x7F", "\xC2\x80", "\xC3\xA9\xE2\x82\xAC", "\xED\x9F\xBF", "\xEF\xBF\xBF",
           "\xF0\x9D\x84\x9E", "\xF4\x8F\xBF\xBF"}) {
    expectUtf8(text, true);
  }
  expectUtf8(std::string(1, '\0'), true);
}

TEST(Utf8Test, whatBreaksItsRulesIsNot) {
  for (const std::string& text :
       std::vector<std::string>{"\x80", "\xBF", "\xC3", "\xC3(", "\xC0\x80", "\xE2\x82",
                                "\xE2(\x82", "\xE0\x80\x80", "\xED\xA0\x80", "\xF0\x9D\x84",
                                "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"}) {
    expectUtf8(text, false);
    expectUtf8("\xC3\xA9" + text, false);
  }
}

}  // namespace
}  // namespace qorix
