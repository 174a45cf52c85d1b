#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

#include <qorix/platform/Value.h>

namespace qorix {
namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

TEST(ValueTest, numbersAreTruncatedTowardZeroAndSaturate) {
  EXPECT_EQ(Value(1.9).integerValue(), 1);
  EXPECT_EQ(Value(-0.5).integerValue(), 0);
  EXPECT_EQ(Value(-1.9).integerValue(), -1);
  EXPECT_EQ(Value(1e30).integerValue(), kLargest);
  EXPECT_EQ(Value(-1e30).integerValue(), kSmallest);
  EXPECT_EQ(Value(9223372036854775808.0).integerValue(), kLargest);
  EXPECT_EQ(Value(-9223372036854775808.0).integerValue(), kSmallest);
  EXPECT_EQ(Value(HUGE_VAL).integerValue(), kLargest);
  EXPECT_EQ(Value(std::nan("")).integerValue(), 0);
  EXPECT_EQ(Value(kLargest).integerValue(), kLargest);
}

TEST(ValueTest, booleansAreNumbers) {
  EXPECT_TRUE(Value(true).isNumber());
  EXPECT_EQ(Value(true).integerValue(), 1);
  EXPECT_EQ(Value(0.5).booleanValue(), true) << "as a number, not as its integer";
  EXPECT_EQ(Value(0).booleanValue(), false);
}

TEST(ValueTest, noPointerIsABoolean) {
  EXPECT_TRUE((std::is_convertible_v<bool, Value>));
  EXPECT_FALSE((std::is_constructible_v<Value, int*>));
  EXPECT_FALSE((std::is_constructible_v<Value, const void*>));
  EXPECT_FALSE((std::is_constructible_v<Value, Object*>));
  EXPECT_FALSE((std::is_constructible_v<Value, void (*)()>));
  EXPECT_FALSE((std::is_constructible_v<Value, std::nullptr_t>));
}

TEST(ValueTest, otherKindsAreNoNumbers) {
  for (const Value& each :
       {Value(), Value("1"), Value(Array{1}), Value(Dictionary{}), Value(Url::fileUrl("/"))}) {
    EXPECT_FALSE(each.isNumber());
    EXPECT_EQ(each.integerValue(), std::nullopt);
    EXPECT_EQ(each.booleanValue(), std::nullopt);
  }
}

TEST(ValueTest, anObjectIsFoundByItsClass) {
  struct One : Object {};
  struct Two : Object {};
  const auto one = std::make_shared<One>();
  EXPECT_EQ(Value(one).object<One>(), one);
  EXPECT_EQ(Value(one).object<Two>(), nullptr);
  EXPECT_EQ(Value("one").object<One>(), nullptr);
}

TEST(ValueTest, describesItself) {
  EXPECT_EQ(Value("text").description(), "text");
  EXPECT_EQ(Value(-7).description(), "-7");
  EXPECT_EQ(Value(true).description(), "1");
  EXPECT_EQ(Value(0.5).description(), "0.5");
  EXPECT_EQ(Value().description(), "(null)");
  EXPECT_EQ(Value(Url::fileUrl("/a")).description(), "file:///a");
  EXPECT_EQ(Value(Array{}).description(), "(list)");
  EXPECT_EQ(Value(Dictionary{}).description(), "(dictionary)");
  EXPECT_EQ(Value(std::make_shared<Object>()).description(), "(object)");
}

}  // namespace
}  // namespace qorix
