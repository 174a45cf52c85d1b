#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string_view>

#include "text/LeadingInteger.h"

namespace qorix {
namespace {

constexpr auto kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr auto kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr auto kMin32 = std::numeric_limits<std::int32_t>::min();
constexpr auto kMax32 = std::numeric_limits<std::int32_t>::max();

struct Case {
  std::string_view text;
  std::int64_t as64;
  std::int32_t as32;
};

constexpr Case kCases[] = {
    {"", 0, 0},
    {" ", 0, 0},
    {"0", 0, 0},
    {"12", 12, 12},
    {"12px", 12, 12},
    {"abc", 0, 0},
    {"a12", 0, 0},
    {"3.9", 3, 3},
    {"-3.9", -3, -3},
    {"+7", 7, 7},
    {"-7", -7, -7},
    {"+-7", 0, 0},
    {"-+7", 0, 0},
    {"--7", 0, 0},
    {"++7", 0, 0},
    {"- 7", 0, 0},
    {"-", 0, 0},
    {"+", 0, 0},
    {"007", 7, 7},
    {"-0", 0, 0},
    {" \t\n\v\f\r42 ", 42, 42},
    {"\xC2\xA0"
     "42",
     0, 0},  // a no-break space is no ASCII blank
    {"1 2", 1, 1},
    {"0x10", 0, 0},
    {"1e3", 1, 1},
    {"2147483647", 2147483647, kMax32},
    {"2147483648", 2147483648, kMax32},
    {"-2147483648", -2147483648, kMin32},
    {"-2147483649", -2147483649, kMin32},
    {"9223372036854775807", kMax64, kMax32},
    {"9223372036854775808", kMax64, kMax32},
    {"+9223372036854775808", kMax64, kMax32},
    {"-9223372036854775808", kMin64, kMin32},
    {"-9223372036854775809", kMin64, kMin32},
    {"99999999999999999999999999999999999999px", kMax64, kMax32},
    {"-99999999999999999999999999999999999999px", kMin64, kMin32},
};

TEST(LeadingIntegerTest, readsTheIntegerThatATextBeginsWithAndSaturates) {
  for (const auto& [text, as64, as32] : kCases) {
    EXPECT_EQ(leadingInteger<std::int64_t>(text), as64) << '"' << text << '"';
    EXPECT_EQ(leadingInteger<std::int32_t>(text), as32) << '"' << text << '"';
  }
}

}  // namespace
}  // namespace qorix
