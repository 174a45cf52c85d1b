#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qorix::adcheck {

// A plain look at an HTML page, no parser of it: start and end tags as they are written, outside of
// comments and of the contents of script, style, textarea and title elements. What scripts write
// into the page is not seen. Offsets are bytes of the page.

struct Attribute {
  std::string name;  // in lower case
  std::string_view value;
  std::size_t offset = 0;  // of the value
};

struct Tag {
  std::string name;  // in lower case
  bool isEnd = false;
  std::size_t begin = 0;
  std::size_t end = 0;  // behind ">"
  std::vector<Attribute> attributes;

  /// The first attribute of that name, or null.
  const Attribute* attribute(std::string_view attributeName) const;
};

struct Part {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct PageScan {
  std::vector<Tag> tags;      // in the order of the page
  std::vector<Part> scripts;  // the contents of script elements
};

PageScan scanPage(std::string_view page);

}  // namespace qorix::adcheck
