#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include <qorix/platform/Value.h>

namespace qorix {

namespace {

std::int64_t truncateToInteger(double number) {
  // 2^63 itself is representable as a double and is already out of range.
  constexpr double kBound = 9223372036854775808.0;
  if (std::isnan(number)) {
    return 0;
  }
  if (number >= kBound) {
    return std::numeric_limits<std::int64_t>::max();
  }
  if (number < -kBound) {
    return std::numeric_limits<std::int64_t>::min();
  }
  return static_cast<std::int64_t>(number);
}

}  // namespace

bool Value::isNumber() const {
  return std::holds_alternative<bool>(content_) || std::holds_alternative<std::int64_t>(content_) ||
         std::holds_alternative<double>(content_);
}

std::optional<std::int64_t> Value::integerValue() const {
  if (const auto* flag = as<bool>()) {
    return *flag ? 1 : 0;
  }
  if (const auto* integer = as<std::int64_t>()) {
    return *integer;
  }
  if (const auto* number = as<double>()) {
    return truncateToInteger(*number);
  }
  return std::nullopt;
}

std::optional<bool> Value::booleanValue() const {
  if (const auto* number = as<double>()) {
    return *number != 0;
  }
  const auto integer = integerValue();
  return integer ? std::optional(*integer != 0) : std::nullopt;
}

std::string Value::description() const {
  if (const auto* text = as<std::string>()) {
    return *text;
  }
  if (const auto* url = as<Url>()) {
    return url->absoluteString();
  }
  if (const auto* number = as<double>()) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), *number).ptr;
    return {digits.data(), end};
  }
  if (const auto integer = integerValue()) {
    return std::to_string(*integer);
  }
  if (as<Array>() != nullptr) {
    return "(list)";
  }
  if (as<Dictionary>() != nullptr) {
    return "(dictionary)";
  }
  return isNull() ? "(null)" : "(object)";
}

const Value* find(const Dictionary& dictionary, const std::string& key) {
  const auto entry = dictionary.find(key);
  return entry == dictionary.end() ? nullptr : &entry->second;
}

}  // namespace qorix
