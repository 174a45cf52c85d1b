#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorix::tools::adcheck {

// A plain look at an HTML page, no parser of it: start and end tags as they are written, outside of
// comments and of the contents of elements such as script, title and template. What scripts write
// into the page is not seen. Offsets are bytes of the page.

struct Attribute {
  std::string name;        // in lower case
  std::string value;       // with ASCII characters in place of references to them
  std::size_t offset = 0;  // of the value
};

struct Tag {
  std::string name;  // in lower case
  bool isEnd = false;
  bool isSelfClosing = false;
  std::size_t begin = 0;
  std::size_t end = 0;  // behind ">"
  std::vector<Attribute> attributes;
  // Of start tags: indexes of other tags.
  std::optional<std::size_t> parent;  // of the element that it stands in
  std::optional<std::size_t> link;    // of the innermost link around it, or its own

  /// The first attribute of that name, or null.
  const Attribute* attribute(std::string_view attributeName) const;
};

/// Whether it begins an `a` or `area` element with an address.
bool isLink(const Tag& tag);

struct Part {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct PageScan {
  std::vector<Tag> tags;      // in the order of the page
  std::vector<Part> scripts;  // the contents of script elements
};

PageScan scanPage(std::string_view page);

}  // namespace qorix::tools::adcheck
