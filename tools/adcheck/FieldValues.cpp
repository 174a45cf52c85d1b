#include "tools/adcheck/FieldValues.h"

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
  const std::string start = "version is " + quoted(version) + ": ";
  if (version.find('a', first + 1) != version.npos) {
    return start +
           "what follows the second \"a\" is not compared, only what precedes the first and the "
           "number between them";
  }
  const auto number = trimmed(version.substr(first + 1));
  const bool isNumber = number.empty() || (number.front() >= '0' && number.front() <= '9');
  return isNumber ? std::nullopt
                  : std::optional(start +
                                  "behind an \"a\" only a number is compared, and there is "
                                  "none: all such versions are one");
}

std::optional<std::string> oddIdentifier(std::string_view identifier) {
  if (identifier.find_first_of("'\\") == identifier.npos) {
    return std::nullopt;
  }
  return "the identifier " + quoted(identifier) +
         " holds a quote or a backslash, which breaks the script that tells the page about it";
}

}  // namespace qorix::adcheck
