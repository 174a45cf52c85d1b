#include <gtest/gtest.h>

#include "presentation/VersionRule.h"

namespace qorix {
namespace {

TEST(VersionRuleTest, comparesTheTextBeforeTheFirstALetterByLetter) {
  EXPECT_TRUE(isSameAdVersion("2.1", "2.1"));
  EXPECT_FALSE(isSameAdVersion("10", "9"));
  EXPECT_FALSE(isSameAdVersion("1.0", "1.00"));
  EXPECT_FALSE(isSameAdVersion("B", "b"));
}

TEST(VersionRuleTest, differsWhenTheNumbersOfComponentsDiffer) {
  EXPECT_FALSE(isSameAdVersion("2.1", "2.1a3"));
  EXPECT_FALSE(isSameAdVersion("2.1a3", "2.1a3a9"));
  EXPECT_FALSE(isSameAdVersion("2.1", "2.1a"));
}

TEST(VersionRuleTest, comparesTheSecondComponentByValue) {
  EXPECT_TRUE(isSameAdVersion("2.1a3", "2.1a03"));
  EXPECT_TRUE(isSameAdVersion("2.1a 3", "2.1a3rc"));
  EXPECT_FALSE(isSameAdVersion("2.1a3", "2.1a4"));
  EXPECT_TRUE(isSameAdVersion("2.1ax", "2.1a"));
  EXPECT_TRUE(isSameAdVersion("2.1a-0", "2.1a0"));
}

TEST(VersionRuleTest, aCapitalAIsALetterOfTheTextAndSeparatesNothing) {
  EXPECT_FALSE(isSameAdVersion("2.1A3", "2.1A03"));
  EXPECT_FALSE(isSameAdVersion("2.1A3", "2.1a3"));
  EXPECT_TRUE(isSameAdVersion("2.1A3", "2.1A3"));
  EXPECT_TRUE(isSameAdVersion("2.1A3a7", "2.1A3a07"));
}

TEST(VersionRuleTest, ignoresComponentsAfterTheSecond) {
  EXPECT_TRUE(isSameAdVersion("2.1a3a1", "2.1a3a9"));
}

TEST(VersionRuleTest, readsTheSecondComponentAs32Bits) {
  EXPECT_TRUE(isSameAdVersion("1a2147483647", "1a99999999999"));
  EXPECT_FALSE(isSameAdVersion("1a2147483646", "1a99999999999"));
}

}  // namespace
}  // namespace qorix
