#pragma once

#include <charconv>
#include <limits>
#include <string_view>
#include <system_error>

namespace qorix {

/// The decimal integer that `text` begins with: leading ASCII white space, perhaps a sign, then the
/// digits up to the first other character. Beyond the range of `Integer` the nearest bound; 0 if
/// the text does not begin with an integer.
template <class Integer>
Integer leadingInteger(std::string_view text) {
  const auto start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == std::string_view::npos) {
    return 0;
  }
  text.remove_prefix(start);
  const bool isNegative = text.front() == '-';
  if (text.front() == '+') {
    text.remove_prefix(1);
    if (text.starts_with('-')) {
      return 0;
    }
  }
  Integer value = 0;  // from_chars leaves it if there are no digits
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    using Limits = std::numeric_limits<Integer>;
    return isNegative ? Limits::min() : Limits::max();
  }
  return value;
}

}  // namespace qorix
