#include "definition/Json.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "text/LeadingInteger.h"
#include "text/PlainNumbers.h"

namespace qorix {

namespace {

constexpr std::size_t kDeepestNesting = 512;
constexpr std::string_view kDigits = "0123456789";

/// What is wrong according to the reader's `message`, without name, place and the text read:
/// "... syntax error while parsing value - invalid literal; last read: 'tru}'".
std::string reasonIn(std::string_view message) {
  constexpr std::string_view kMark = " - ";
  const auto mark = message.find(kMark);
  if (mark != message.npos) {
    message.remove_prefix(mark + kMark.size());
  }
  return std::string(message.substr(0, message.find("; last read: ")));
}

/// Builds a value from the reader's events. Returning false stops the reader.
class JsonBuilder : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit JsonBuilder(JsonDefect* defect) : defect_(defect) {}

  Value takeValue() { return std::move(value_); }

  /// Whether the reader stopped at a number beyond the range of a double.
  bool stoppedAtHugeNumber() const { return stoppedAtHugeNumber_; }

  bool null() override { return addScalar({}); }
  bool boolean(bool value) override { return addScalar(value); }
  bool number_integer(std::int64_t value) override { return addScalar(value); }
  // Called for every integer that is not negative: it may fit a signed one.
  bool number_unsigned(std::uint64_t value) override {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
    return value <= kLargest ? addScalar(static_cast<std::int64_t>(value))
                             : addScalar(static_cast<double>(value));
  }
  bool number_float(double value, const std::string& /*token*/) override {
    return addScalar(value);
  }
  bool string(std::string& value) override { return addScalar(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }  // does not occur in JSON texts

  bool start_object(std::size_t /*count*/) override { return open(true); }
  bool key(std::string& name) override {
    open_.back().key = std::move(name);
    return true;
  }
  bool end_object() override { return close(); }
  bool start_array(std::size_t /*count*/) override { return open(false); }
  bool end_array() override { return close(); }

  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const nlohmann::detail::exception& error) override {
    constexpr int kNumberOverflow = 406;
    stoppedAtHugeNumber_ = error.id == kNumberOverflow;
    if (defect_ != nullptr) {  // the position counts the bytes read, including the wrong one
      *defect_ = {reasonIn(error.what()), position == 0 ? 0 : position - 1};
    }
    return false;
  }

 private:
  struct Container {
    bool isObject = false;
    Dictionary members;
    Array elements;
    std::string key;  // of the member that is being read
  };

  bool refuse(const char* reason) {
    if (defect_ != nullptr) {
      *defect_ = {reason, 0};
    }
    return false;
  }

  bool addScalar(Value value) {
    if (open_.empty()) {
      return refuse("neither an object nor an array");
    }
    add(std::move(value));
    return true;
  }

  void add(Value value) {
    Container& container = open_.back();
    if (container.isObject) {
      container.members.insert_or_assign(std::move(container.key), std::move(value));
    } else {
      container.elements.push_back(std::move(value));
    }
  }

  bool open(bool isObject) {
    if (open_.size() == kDeepestNesting) {
      return refuse("nested too deeply");
    }
    open_.emplace_back().isObject = isObject;
    return true;
  }

  bool close() {
    Container closed = std::move(open_.back());
    open_.pop_back();
    Value value =
        closed.isObject ? Value(std::move(closed.members)) : Value(std::move(closed.elements));
    if (open_.empty()) {
      value_ = std::move(value);
    } else {
      add(std::move(value));
    }
    return true;
  }

  JsonDefect* const defect_;  // null if nobody wants it
  std::vector<Container> open_;
  Value value_;
  bool stoppedAtHugeNumber_ = false;
};

std::size_t skipDigits(std::string_view text, std::size_t from) {
  return std::min(text.find_first_not_of(kDigits, from), text.size());
}

/// Whether `token` is a JSON number too large for a double.
bool isHugeNumber(std::string_view token) {
  // -?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][+-]?[0-9]+)?
  if (token.starts_with('-')) {
    token.remove_prefix(1);
  }
  const std::size_t integerEnd = token.starts_with('0') ? 1 : skipDigits(token, 0);
  if (integerEnd == 0) {
    return false;
  }
  std::size_t end = integerEnd;
  std::size_t leadingZeros = 0;  // of the fraction
  if (end < token.size() && token[end] == '.') {
    const std::size_t begin = end + 1;
    end = skipDigits(token, begin);
    if (end == begin) {
      return false;
    }
    leadingZeros = std::min(token.find_first_not_of('0', begin), end) - begin;
  }
  std::int64_t exponent = 0;
  if (end < token.size() && (token[end] == 'e' || token[end] == 'E')) {
    std::size_t begin = end + 1;
    exponent = leadingInteger<std::int32_t>(token.substr(begin));
    if (begin < token.size() && (token[begin] == '+' || token[begin] == '-')) {
      ++begin;
    }
    end = skipDigits(token, begin);
    if (end == begin) {
      return false;
    }
  }
  if (end != token.size()) {
    return false;
  }
  double value = 0;
  const auto result = std::from_chars(token.data(), token.data() + token.size(), value);
  if (result.ec == std::errc()) {
    return std::isinf(value);
  }
  // Out of range: too small or too large, depending on where the first digit stands.
  const auto magnitude = token.front() == '0' ? -static_cast<std::int64_t>(leadingZeros)
                                              : static_cast<std::int64_t>(integerEnd);
  return magnitude + exponent > 0;
}

/// The index after the string that begins at `begin`.
std::size_t skipString(std::string_view text, std::size_t begin) {
  std::size_t index = begin + 1;
  while (index < text.size() && text[index] != '"') {
    index += text[index] == '\\' ? 2 : 1;
  }
  return std::min(index + 1, text.size());
}

/// `text` with each number that is too large for a double replaced by a very large one of its sign
/// and blanks, so that everything else stays where it is.
std::string withHugeNumbersBounded(std::string_view text) {
  std::string bounded;
  bounded.reserve(text.size());
  std::size_t copied = 0;
  std::size_t index = 0;
  while ((index = text.find_first_of("\"-0123456789", index)) != std::string_view::npos) {
    if (text[index] == '"') {
      index = skipString(text, index);
      continue;
    }
    const std::size_t end = std::min(text.find_first_not_of("+-.eE0123456789", index), text.size());
    if (isHugeNumber(text.substr(index, end - index))) {
      bounded += text.substr(copied, index - copied);
      bounded += text[index] == '-' ? "-1e308" : "1e308";
      bounded.resize(end, ' ');
      copied = end;
    }
    index = end;
  }
  bounded += text.substr(copied);
  return bounded;
}

}  // namespace

std::optional<Value> parseJson(std::string_view text, JsonDefect* defect) {
  if (const auto zero = text.find('\0'); zero != std::string_view::npos) {
    if (defect != nullptr) {
      *defect = {"a zero byte", zero};
    }
    return std::nullopt;
  }
  const PlainNumbers plainNumbers;  // the reader leaves fractions to the C library
  JsonBuilder builder(defect);
  if (nlohmann::json::sax_parse(text, &builder)) {
    return builder.takeValue();
  }
  if (!builder.stoppedAtHugeNumber()) {
    return std::nullopt;
  }
  JsonBuilder secondBuilder(defect);
  const bool isRead = nlohmann::json::sax_parse(withHugeNumbersBounded(text), &secondBuilder);
  return isRead ? std::optional(secondBuilder.takeValue()) : std::nullopt;
}

}  // namespace qorix
