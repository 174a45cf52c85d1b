#include <gtest/gtest.h>

#include "manager/Excerpt.h"

namespace qorix {
namespace {

std::string repeat(const std::string& piece, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) {
    text += piece;
  }
  return text;
}

TEST(ExcerptTest, isMadeOfMoreThan500Characters) {
  EXPECT_EQ(beginningOfLongText(""), std::nullopt);
  EXPECT_EQ(beginningOfLongText(std::string(500, 'x')), std::nullopt);
  EXPECT_EQ(beginningOfLongText(std::string(501, 'x')), std::string(100, 'x'));
}

TEST(ExcerptTest, countsUtf16Units) {
  EXPECT_EQ(beginningOfLongText(repeat("\u00E9", 500)), std::nullopt);
  EXPECT_EQ(beginningOfLongText(repeat("\u6F22", 501)), repeat("\u6F22", 100));
  EXPECT_EQ(beginningOfLongText(repeat("\U0001F600", 250)), std::nullopt);
  EXPECT_EQ(beginningOfLongText(repeat("\U0001F600", 251)), repeat("\U0001F600", 50));
}

TEST(ExcerptTest, showsHalfACharacterAtTheCutAsReplacement) {
  EXPECT_EQ(beginningOfLongText("x" + repeat("\U0001F600", 250)),
            "x" + repeat("\U0001F600", 49) + "\uFFFD");
}

}  // namespace
}  // namespace qorix
