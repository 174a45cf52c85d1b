#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace qorix::tools {

/// A place as editors show it. Both numbers start at 1; columns count characters.
struct SourcePosition {
  std::size_t line = 1;
  std::size_t column = 1;
  bool operator==(const SourcePosition&) const = default;
};

/// Finds the places of a UTF-8 text, which must outlive it. Lines end in LF, CR or CR LF; a byte
/// order mark is no character.
class SourceLines {
 public:
  explicit SourceLines(std::string_view text);

  /// The place of the byte `offset`; the end of the text if it is beyond that.
  SourcePosition positionOf(std::size_t offset) const;

 private:
  std::size_t charactersBefore(std::size_t offset) const;

  std::string_view text_;
  std::vector<std::size_t> starts_;  // of the lines, in bytes
  // The number of characters before each piece of the text, so that a long line is counted once.
  std::vector<std::size_t> counts_;
};

}  // namespace qorix::tools
