#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "definition/Json.h"
#include "support/Locale.h"
#include "support/Repeated.h"

namespace qorix {
namespace {

constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
constexpr auto kMax = std::numeric_limits<std::int64_t>::max();

/// The integer value of the number when it is the only element of an array.
std::optional<std::int64_t> integerOf(const std::string& number) {
  const auto value = parseJson("[" + number + "]");
  const auto* array = value ? value->as<Array>() : nullptr;
  return array == nullptr || array->size() != 1 ? std::nullopt : array->front().integerValue();
}

const std::vector<std::string> kGood = {
    "{}",
    "[]",
    " \t\r\n{} \t\r\n",
    "[null, true, false, 0, -0, 1.5, \"\"]",
    R"({"a":{"b":[{"c":[]}]}})",
    R"(["\"\\\/\b\f\n\r\t"])",
    R"(["é\uD834\uDD1E"])",
    "[\"\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E\x7F\"]",
    R"({"":1})",
    "[1e5, 1E+5, 1e-5, 0e0, 0.0, -0.0e-0, 123456789012345678901234567890]",
    "[1e-400]",
    "[1e400]",
    "\xEF\xBB\xBF{}",
    R"(["1e400"])",
};

const std::vector<std::string> kBad = {
    "",
    " ",
    "null",
    "true",
    "1",
    "1e400",
    "\"text\"",
    "{} {}",
    "{}x",
    "[]]",
    "[] ,",
    "[",
    "{",
    "]",
    "[1",
    "[1,",
    "[1,]",
    "[,1]",
    "[1 2]",
    "[1,,2]",
    R"({"a":1,})",
    R"({"a"})",
    R"({"a":})",
    R"({"a" 1})",
    R"({a:1})",
    R"({'a':1})",
    R"({1:1})",
    R"({"a":1 "b":2})",
    "[1}",
    R"({"a":1])",
    "[//\n1]",
    "[1/* */]",
    "# {}",
    "[NaN]",
    "[nan]",
    "[Infinity]",
    "[-Infinity]",
    "[True]",
    "[nul]",
    "[01]",
    "[-01]",
    "[+1]",
    "[1.]",
    "[.5]",
    "[-]",
    "[-.5]",
    "[1e]",
    "[1e+]",
    "[1.e5]",
    "[0x10]",
    "[1_000]",
    "[01e400]",
    "[1.e400]",
    "[1e400.5]",
    "[1e400-1]",
    "[1e400x]",
    "[1e400",
    "[1e400]]",
    "[--1e400]",
    "[1e400, 01]",
    R"(["abc)",
    R"(["\)",
    R"(["\x41"])",
    R"(["\u12"])",
    R"(["\u12G4"])",
    R"(["\uD834"])",
    R"(["\uDD1E"])",
    R"(["\uD834\u0041"])",
    R"(["\uD834x"])",
    "[\"a\nb\"]",
    "[\"a\tb\"]",
    "[\"\x01\"]",
    "[\"\xC3\"]",
    "[\"\x80\"]",
    "[\"\xC0\x80\"]",
    "[\"\xED\xA0\x80\"]",
    "[\"\xF5\x80\x80\x80\"]",
    "[\"\xFF\"]",
    "[\xC2\xA0]",
    "\xEF\xBB",
    "\xEF\xBB\xBF",
    "\xFE\xFF",
    "<a/>",
};

TEST(JsonTest, acceptsWhatTheGrammarAllows) {
  for (const auto& text : kGood) {
    EXPECT_TRUE(parseJson(text)) << text;
  }
}

TEST(JsonTest, refusesWhatTheGrammarDoesNotAllow) {
  for (const auto& text : kBad) {
    EXPECT_FALSE(parseJson(text)) << text;
  }
}

TEST(JsonTest, refusesZeroBytesAnywhere) {
  using namespace std::string_literals;
  for (const auto& text : {"\0{}"s, "{}\0"s, "{\0}"s, "[\"\0\"]"s, "{}\0garbage"s}) {
    EXPECT_FALSE(parseJson(text));
  }
}

TEST(JsonTest, refusesEveryTruncationOfAText) {
  const std::string whole = R"({"a":[1,-2.5e3,"é\n",{"b":true,"c":null}],"d":1e400})";
  ASSERT_TRUE(parseJson(whole));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(parseJson(whole.substr(0, size))) << size;
  }
}

TEST(JsonTest, nestsFiveHundredAndTwelveDeepAndNoDeeper) {
  EXPECT_TRUE(parseJson(repeated("[", 512) + repeated("]", 512)));
  EXPECT_FALSE(parseJson(repeated("[", 513) + repeated("]", 513)));
  EXPECT_TRUE(parseJson(repeated("{\"a\":", 511) + "{}" + repeated("}", 511)));
  EXPECT_FALSE(parseJson(repeated("{\"a\":", 512) + "{}" + repeated("}", 512)));
}

TEST(JsonTest, refusesDepthBombs) {
  EXPECT_FALSE(parseJson(std::string(100'000, '[')));
  EXPECT_FALSE(parseJson(repeated("[", 100'000) + repeated("]", 100'000)));
  EXPECT_FALSE(parseJson(repeated("{\"a\":", 100'000) + "1" + repeated("}", 100'000)));
  EXPECT_FALSE(parseJson(repeated("[{\"a\":", 100'000)));
  EXPECT_FALSE(parseJson("[1e400," + std::string(100'000, '[')));
}

TEST(JsonTest, keepsSixtyFourBitIntegers) {
  EXPECT_EQ(integerOf("9223372036854775807"), kMax);
  EXPECT_EQ(integerOf("-9223372036854775808"), kMin);
  EXPECT_EQ(integerOf("9007199254740993"), 9007199254740993);
  EXPECT_EQ(integerOf("-9007199254740993"), -9007199254740993);
}

TEST(JsonTest, truncatesFractionsTowardZero) {
  EXPECT_EQ(integerOf("1.9"), 1);
  EXPECT_EQ(integerOf("-1.9"), -1);
  EXPECT_EQ(integerOf("-0.5"), 0);
  EXPECT_EQ(integerOf("2.5e1"), 25);
  EXPECT_EQ(integerOf("1e-400"), 0);
  EXPECT_EQ(integerOf("-1e-99999999999999999999"), 0);
}

TEST(JsonTest, saturatesNumbersBeyondSixtyFourBits) {
  for (const auto* number : {"9223372036854775808", "18446744073709551615", "18446744073709551616",
                             "123456789012345678901234567890", "1e30", "1e308"}) {
    EXPECT_EQ(integerOf(number), kMax) << number;
  }
  EXPECT_EQ(integerOf("-9223372036854775809"), kMin);
  EXPECT_EQ(integerOf("-1e30"), kMin);
}

TEST(JsonTest, saturatesNumbersBeyondADouble) {
  const std::string digits = repeated("9", 400);
  for (const auto& number :
       {std::string("1e400"), std::string("1E+400"), std::string("0.001e400"),
        std::string("12.5e99999999999999999999"), digits, digits + ".5", digits + "e-50"}) {
    EXPECT_EQ(integerOf(number), kMax) << number;
    EXPECT_EQ(integerOf("-" + number), kMin) << number;
  }
  EXPECT_EQ(integerOf(repeated("3", 400) + "e-399"), 3);
  EXPECT_EQ(integerOf("0." + repeated("0", 400) + "1e401"), 1);
}

TEST(JsonTest, hugeNumbersLeaveTheRestOfTheTextAlone) {
  const auto value = parseJson(
      R"({"1e400":"-1e400 \" 1e400 \\","n":-1e400,"m":[1e400, 2,1e-400 ],"k":7,"t":"1e400"})");
  ASSERT_TRUE(value);
  const auto& members = *value->as<Dictionary>();
  EXPECT_EQ(members.size(), 5U);
  EXPECT_EQ(*find(members, "1e400")->as<std::string>(), R"(-1e400 " 1e400 \)");
  EXPECT_EQ(find(members, "n")->integerValue(), kMin);
  const auto& array = *find(members, "m")->as<Array>();
  ASSERT_EQ(array.size(), 3U);
  EXPECT_EQ(array[0].integerValue(), kMax);
  EXPECT_EQ(array[1].integerValue(), 2);
  EXPECT_EQ(array[2].integerValue(), 0);
  EXPECT_EQ(find(members, "k")->integerValue(), 7);
  EXPECT_EQ(*find(members, "t")->as<std::string>(), "1e400");
}

TEST(JsonTest, manyHugeNumbersTakeOneMoreReadingAndNotOneEach) {
  const auto value = parseJson("[" + repeated("1e400,", 200'000) + "1]");
  ASSERT_TRUE(value);
  EXPECT_EQ(value->as<Array>()->size(), 200'001U);
  const std::string digits = repeated("7", 1'000'000);
  EXPECT_EQ(integerOf(digits), kMax);
  EXPECT_FALSE(parseJson("[1e400," + repeated("1e400-", 200'000)));
}

// They write fractions with a comma or with a character of two bytes.
TEST(JsonTest, numbersAreReadTheSameInEveryLocale) {
  for (const auto* name : {"tr_TR", "de_DE", "ps_AF"}) {
    SCOPED_TRACE(name);
    const LocaleInUse locale(name);
    const std::string separator = std::localeconv()->decimal_point;
    ASSERT_NE(separator, ".");
    const auto value =
        parseJson("[2.7, -0.5, 1.25e2, 12345678.5, 0.001e3, 1e400, -1.5e400, 1234567]");
    EXPECT_EQ(std::localeconv()->decimal_point, separator);  // the host keeps its own
    ASSERT_TRUE(value);
    const auto& array = *value->as<Array>();
    ASSERT_EQ(array.size(), 8U);
    EXPECT_EQ(*array[0].as<double>(), 2.7);
    EXPECT_EQ(*array[1].as<double>(), -0.5);
    EXPECT_EQ(*array[2].as<double>(), 125);
    EXPECT_EQ(*array[3].as<double>(), 12345678.5);
    EXPECT_EQ(*array[4].as<double>(), 1);
    EXPECT_EQ(array[5].integerValue(), kMax);
    EXPECT_EQ(array[6].integerValue(), kMin);
    EXPECT_EQ(*array[7].as<std::int64_t>(), 1234567);
  }
}

TEST(JsonTest, theGrammarIsTheSameInEveryLocale) {
  const LocaleInUse locale("ps_AF");
  for (const auto& text : kGood) {
    EXPECT_TRUE(parseJson(text)) << text;
  }
  for (const auto& text : kBad) {
    EXPECT_FALSE(parseJson(text)) << text;
  }
  const std::string separator = std::localeconv()->decimal_point;
  EXPECT_EQ(separator.size(), 2U);
  EXPECT_FALSE(parseJson("[2" + separator + "7]"));
  EXPECT_EQ(std::localeconv()->decimal_point, separator);
}

TEST(JsonTest, theLastOfSeveralMembersOfOneNameWins) {
  const auto value = parseJson(R"({"a":1,"b":2,"a":3})");
  ASSERT_TRUE(value);
  EXPECT_EQ(value->as<Dictionary>()->size(), 2U);
  EXPECT_EQ(find(*value->as<Dictionary>(), "a")->integerValue(), 3);
}

TEST(JsonTest, tellsTheTypesOfValuesApart) {
  const auto value = parseJson(R"([null,true,1,1.5,"1",[],{}])");
  ASSERT_TRUE(value);
  const auto& array = *value->as<Array>();
  ASSERT_EQ(array.size(), 7U);
  EXPECT_TRUE(array[0].isNull());
  EXPECT_EQ(*array[1].as<bool>(), true);
  EXPECT_EQ(*array[2].as<std::int64_t>(), 1);
  EXPECT_EQ(*array[3].as<double>(), 1.5);
  EXPECT_EQ(*array[4].as<std::string>(), "1");
  EXPECT_TRUE(array[5].as<Array>()->empty());
  EXPECT_TRUE(array[6].as<Dictionary>()->empty());
}

TEST(JsonTest, decodesEscapes) {
  const auto value = parseJson(R"(["\"\\\/\b\f\n\r\té\uD834\uDD1E"])");
  ASSERT_TRUE(value);
  EXPECT_EQ(*value->as<Array>()->front().as<std::string>(),
            "\"\\/\b\f\n\r\t\xC3\xA9\xF0\x9D\x84\x9E");
}

TEST(JsonTest, aTextThatIsNotReadIsExplainedOnRequest) {
  const auto expectDefect = [](const std::string& text, std::size_t offset,
                               const std::string& message) {
    JsonDefect defect;
    EXPECT_FALSE(parseJson(text, &defect)) << text;
    EXPECT_EQ(defect.offset, offset) << text;
    EXPECT_EQ(defect.message, message) << text;
  };
  expectDefect("", 0, "unexpected end of input; expected '[', '{', or a literal");
  expectDefect("{\"a\": 1,}", 8, "unexpected '}'; expected string literal");
  expectDefect("{\"a\" 1}", 5, "unexpected number literal; expected ':'");
  expectDefect("[1, nul]", 7, "invalid literal");
  expectDefect("[1", 2, "unexpected end of input; expected ']'");
  expectDefect("[]]", 2, "unexpected ']'; expected end of input");
  expectDefect("7", 0, "neither an object nor an array");
  expectDefect(repeated("[", 513) + repeated("]", 513), 0, "nested too deeply");
  expectDefect(std::string("[\0]", 3), 1, "a zero byte");
  // Numbers too large for a double do not change the offset of what follows them.
  expectDefect("[1e400, -99999e999, 1e0000999, ,]", 31,
               "unexpected ','; expected '[', '{', or a literal");
}

}  // namespace
}  // namespace qorix
