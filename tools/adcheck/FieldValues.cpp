#include "tools/adcheck/FieldValues.h"

#include <algorithm>
#include <limits>

#include "text/LeadingInteger.h"
#include "tools/adcheck/Wording.h"

namespace qorix::adcheck {

std::optional<std::string> oddNumber(std::string_view name, std::int64_t value) {
  constexpr std::int64_t kLastAnchor = 8;
  const std::string start = std::string(name) + " is " + std::to_string(value) + ": ";
  if (name == "embed" && value < 0) {
    return start + "nothing is shown, but the showing is counted";
  }
  if (name == "embed" && value > kLastAnchor) {
    return start + "there are eight anchors; the banner lies at the lower left, without offsets";
  }
  if ((name == "width" || name == "height") && value < 1) {
    return start + "a banner has no area, a pop-up takes the size that its window has";
  }
  if (name == "count" && value < 1) {
    return start + "shown once where nothing was shown before, and never elsewhere";
  }
  if (name == "delay" && value < 0) {
    return start + "the showing is counted, but never seen";
  }
  if (name == "adid" && value < 1) {
    return start + "identifiers count from 1";
  }
  return std::nullopt;
}

std::optional<std::string> oddVersion(std::string_view version) {
  const auto first = version.find('a');
  if (first == version.npos) {
    return std::nullopt;
  }
  const std::string start = "version is " + inQuotes(version) + ": ";
  if (version.find('a', first + 1) != version.npos) {
    return start +
           "what follows the second \"a\" is not compared, only what precedes the first and the "
           "number between them";
  }
  auto number = trimmed(version.substr(first + 1));
  if (number.empty()) {
    return std::nullopt;
  }
  if (number.front() == '-' || number.front() == '+') {
    number.remove_prefix(1);
  }
  const auto end = std::min(number.find_first_not_of("0123456789"), number.size());
  if (end == 0) {
    return start +
           "behind an \"a\" only a number is compared, and there is none: all such versions are "
           "one";
  }
  if (end < number.size()) {
    return start + "what follows the number behind the \"a\" is not compared";
  }
  const auto value = leadingInteger<std::int64_t>(version.substr(first + 1));
  using Limits = std::numeric_limits<std::int32_t>;
  return value >= Limits::min() && value <= Limits::max()
             ? std::nullopt
             : std::optional(start +
                             "the number behind the \"a\" is larger than 32 bits hold, and all "
                             "such numbers are one");
}

std::optional<std::string> oddIdentifier(std::string_view identifier) {
  if (identifier.find_first_of("'\\") == identifier.npos) {
    return std::nullopt;
  }
  return "the identifier " + inQuotes(identifier) +
         " holds a quote or a backslash, which breaks the script that tells the page about it";
}

}  // namespace qorix::adcheck
