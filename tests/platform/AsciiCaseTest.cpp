#include <gtest/gtest.h>

#include <qorix/platform/Url.h>

#include "support/Locale.h"
#include "text/AsciiCase.h"
#include "webview/LinkMarks.h"

namespace qorix {
namespace {

TEST(AsciiCaseTest, isThatOfTheLettersFromAToZ) {
  EXPECT_EQ(asciiLower("AZ[@`{az09\xC4\xE4"), "az[@`{az09\xC4\xE4");
  EXPECT_EQ(asciiUpper("AZ[@`{az09\xC4\xE4"), "AZ[@`{AZ09\xC4\xE4");
  EXPECT_TRUE(isAsciiLetter('a') && isAsciiLetter('Z') && isAsciiDigit('0') && isAsciiDigit('9'));
  for (const char c : {'@', '[', '`', '{', '/', ':', '\xC4', '\0'}) {
    EXPECT_FALSE(isAsciiLetter(c) || isAsciiDigit(c)) << c;
  }
}

TEST(AsciiCaseTest, textsAreComparedWhole) {
  EXPECT_TRUE(equalIgnoringCase("gZip", "GziP"));
  EXPECT_TRUE(equalIgnoringCase("", ""));
  EXPECT_FALSE(equalIgnoringCase("gzip", "gzi"));
  EXPECT_FALSE(equalIgnoringCase("gzi", "gzip"));
  EXPECT_FALSE(equalIgnoringCase("\xC4", "\xE4"));
}

TEST(AsciiCaseTest, partsAreFoundAnywhere) {
  EXPECT_TRUE(startsWithIgnoringCase("HTTPS://x", "https:"));
  EXPECT_TRUE(startsWithIgnoringCase("x", ""));
  EXPECT_FALSE(startsWithIgnoringCase("http", "https"));
  EXPECT_TRUE(containsIgnoringCase("a=1&ZamOpenIAP=1", "zamopeniap=1"));
  EXPECT_TRUE(containsIgnoringCase("", ""));
  EXPECT_FALSE(containsIgnoringCase("zamopenia", "zamopeniap"));
}

// "I" is no capital "i" there.
TEST(AsciiCaseTest, isTheSameForATurkishUser) {
  const LocaleInUse turkish("tr_TR");
  EXPECT_EQ(asciiLower("INFILE"), "infile");
  EXPECT_EQ(asciiUpper("infile"), "INFILE");
  EXPECT_TRUE(
      queryHoldsMark(Url::fromWebEngine("https://example.com/?ZAMOPENIAP=1"), "zamopeniap=1"));
  EXPECT_TRUE(
      queryHoldsMark(Url::fromWebEngine("https://example.com/?zamopeniap=1"), "ZAMOPENIAP=1"));
  EXPECT_EQ(Url::fromWebEngine("FILE:///x").filePath(), "/x");
}

}  // namespace
}  // namespace qorix
