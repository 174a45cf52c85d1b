#include "presentation/VersionRule.h"

#include <cstdint>
#include <vector>

#include "text/LeadingInteger.h"

namespace qorix {

namespace {

std::vector<std::string_view> componentsOf(std::string_view version) {
  std::vector<std::string_view> components;
  for (;;) {
    const auto separator = version.find('a');
    components.push_back(version.substr(0, separator));
    if (separator == std::string_view::npos) {
      return components;
    }
    version.remove_prefix(separator + 1);
  }
}

}  // namespace

bool isSameAdVersion(std::string_view a, std::string_view b) {
  const auto left = componentsOf(a);
  const auto right = componentsOf(b);
  if (left.front() != right.front() || left.size() != right.size()) {
    return false;
  }
  return left.size() == 1 ||
         leadingInteger<std::int32_t>(left[1]) == leadingInteger<std::int32_t>(right[1]);
}

}  // namespace qorix
