#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qorix::test {

/// The cells of one line of a table, without the blanks around them.
using Row = std::vector<std::string>;

/// A file, or part of one, as text; empty when it cannot be read.
std::string textOfFile(const std::string& path);

/// The guide for authors, read anew from its file. Whatever is asked for and is not there makes the
/// test fail and is empty.
class Guide {
 public:
  Guide();

  /// The rows of a table in the section with that heading ("Elements"), without the head. Tables
  /// count from 0.
  std::vector<Row> table(std::string_view heading, std::size_t number = 0) const;

  /// The whole text in one line, for what may be broken into two.
  std::string prose() const;
  /// The texts of the fenced blocks whose opening line has that word ("console"), in order.
  std::vector<std::string> blocks(std::string_view word) const;
  /// The same of the only one.
  std::string block(std::string_view word) const;

 private:
  std::vector<std::string> lines_;
};

/// What stands between the backticks of a cell.
std::vector<std::string> codesIn(std::string_view cell);
/// The same when there is just one; empty otherwise.
std::string codeIn(std::string_view cell);

}  // namespace qorix::test
