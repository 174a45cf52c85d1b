#include "docs/Guide.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <sstream>

namespace qorix::test {

namespace {

std::string_view trimmed(std::string_view text) {
  const auto begin = text.find_first_not_of(' ');
  return begin == text.npos ? std::string_view()
                            : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

/// The heading on that line; empty if there is none.
std::string_view headingOf(std::string_view line) {
  const auto begin = line.find_first_not_of('#');
  return line.starts_with('#') && begin != line.npos ? trimmed(line.substr(begin))
                                                     : std::string_view();
}

Row cellsOf(std::string_view line) {
  Row cells;
  for (line.remove_prefix(1); !line.empty();) {
    const auto bar = line.find('|');
    cells.emplace_back(trimmed(line.substr(0, bar)));
    line.remove_prefix(bar == line.npos ? line.size() : bar + 1);
  }
  return cells;
}

}  // namespace

std::string textOfFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

Guide::Guide() {
  std::istringstream text(textOfFile(QORIX_GUIDE));
  for (std::string line; std::getline(text, line);) {
    lines_.push_back(line);
  }
  EXPECT_FALSE(lines_.empty()) << QORIX_GUIDE;
}

std::vector<Row> Guide::table(std::string_view heading, std::size_t number) const {
  std::vector<std::vector<Row>> tables;
  bool isInSection = false;
  bool isInTable = false;
  for (const auto& line : lines_) {
    if (!headingOf(line).empty()) {
      isInSection = headingOf(line) == heading;
    }
    const bool isRow = isInSection && line.starts_with('|');
    if (isRow && !isInTable) {
      tables.emplace_back();
    }
    isInTable = isRow;
    if (isRow) {
      tables.back().push_back(cellsOf(line));
    }
  }
  if (tables.size() <= number || tables[number].size() < 3) {
    ADD_FAILURE() << "no table " << number << " under " << heading;
    return {};
  }
  const auto& rows = tables[number];
  return {rows.begin() + 2, rows.end()};  // without the head and the line below it
}

std::string Guide::prose() const {
  std::string text;
  for (const auto& line : lines_) {
    text += line.substr(std::min(line.find_first_not_of(' '), line.size())) + " ";
  }
  return text;
}

std::vector<std::string> Guide::blocks(std::string_view word) const {
  std::vector<std::string> blocks;
  bool isInFence = false;
  bool isWanted = false;
  for (const auto& line : lines_) {
    if (line.starts_with("```")) {
      isInFence = !isInFence;
      isWanted = isInFence && line.ends_with(word);
      if (isWanted) {
        blocks.emplace_back();
      }
    } else if (isWanted) {
      blocks.back() += line + "\n";
    }
  }
  return blocks;
}

std::string Guide::block(std::string_view word) const {
  const auto found = blocks(word);
  EXPECT_EQ(found.size(), 1U) << "blocks called " << word;
  return found.empty() ? "" : found.front();
}

std::vector<std::string> codesIn(std::string_view cell) {
  std::vector<std::string> codes;
  for (;;) {
    const auto begin = cell.find('`');
    const auto end = begin == cell.npos ? cell.npos : cell.find('`', begin + 1);
    if (end == cell.npos) {
      return codes;
    }
    codes.emplace_back(cell.substr(begin + 1, end - begin - 1));
    cell.remove_prefix(end + 1);
  }
}

std::string codeIn(std::string_view cell) {
  const auto codes = codesIn(cell);
  return codes.size() == 1 ? codes.front() : "";
}

}  // namespace qorix::test
