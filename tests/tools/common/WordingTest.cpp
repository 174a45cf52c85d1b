#include <gtest/gtest.h>

#include "support/Locale.h"
#include "tools/common/Wording.h"

namespace qorix::tools {
namespace {

TEST(WordingTest, numbersAreWrittenAsShortAsTheyAre) {
  EXPECT_EQ(numberText(0), "0");
  EXPECT_EQ(numberText(-2.5), "-2.5");
  EXPECT_EQ(numberText(0.1 + 0.2), "0.3");
  EXPECT_EQ(numberText(728), "728");
  EXPECT_EQ(numberText(1e20), "1e+20");
  EXPECT_EQ(sizeText(300, 50.5), "300 x 50.5");
}

// The preview speaks the language of its user.
TEST(WordingTest, numbersAreWrittenTheSameInEveryLocale) {
  const LocaleInUse locale("de_DE");
  EXPECT_EQ(sizeText(1234.5, -0.25), "1234.5 x -0.25");
}

TEST(WordingTest, hiddenCharactersAreBlanks) {
  EXPECT_EQ(inQuotes("a\nb\x1B[31m\u009Bc\u202Ed\xFF"), "\"a b [31m c d\uFFFD\"");
}

TEST(WordingTest, aLongTextIsCutBetweenCharacters) {
  EXPECT_EQ(printable(std::string(79, 'a') + "\u4E2D"), std::string(79, 'a') + "\u4E2D");
  EXPECT_EQ(printable(std::string(79, 'a') + "\u4E2Db"), std::string(79, 'a') + "\u4E2D...");
}

}  // namespace
}  // namespace qorix::tools
