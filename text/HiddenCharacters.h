#pragma once

#include <cstddef>
#include <string_view>

namespace qorix {

/// The first character of a text for people.
struct LeadingCharacter {
  std::size_t size;  ///< in bytes
  /// Whether it must not be shown as it is, since it could end the line, command a terminal or make
  /// other text look different from what it is: a control or format character, a separator of lines
  /// or paragraphs, a byte that is not UTF-8.
  bool isHidden;
};

/// `text` is UTF-8 as a rule, and not empty.
LeadingCharacter leadingCharacter(std::string_view text);

}  // namespace qorix
