#include <gtest/gtest.h>

#include "support/Repeated.h"
#include "text/Excerpt.h"

namespace qorix {
namespace {

TEST(ExcerptTest, isMadeOfMoreThan500Characters) {
  EXPECT_EQ(beginningOfLongText(""), std::nullopt);
  EXPECT_EQ(beginningOfLongText(std::string(500, 'x')), std::nullopt);
  EXPECT_EQ(beginningOfLongText(std::string(501, 'x')), std::string(100, 'x'));
}

TEST(ExcerptTest, countsUtf16Units) {
  EXPECT_EQ(beginningOfLongText(repeated("\u00E9", 500)), std::nullopt);
  EXPECT_EQ(beginningOfLongText(repeated("\u6F22", 501)), repeated("\u6F22", 100));
  EXPECT_EQ(beginningOfLongText(repeated("\U0001F600", 250)), std::nullopt);
  EXPECT_EQ(beginningOfLongText(repeated("\U0001F600", 251)), repeated("\U0001F600", 50));
}

TEST(ExcerptTest, showsHalfACharacterAtTheCutAsReplacement) {
  EXPECT_EQ(beginningOfLongText("x" + repeated("\U0001F600", 250)),
            "x" + repeated("\U0001F600", 49) + "\uFFFD");
}

}  // namespace
}  // namespace qorix
