#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "definition/XmlDocument.h"

namespace qorix {

/// Where the contents of a document stand in its source, for programs that explain documents to
/// their authors. Filled by `XmlDocument::parse` on request. Offsets are bytes of the source, a
/// byte order mark included.
class XmlSourceMap {
 public:
  /// Why a document is not well formed, and where that was noticed.
  struct Error {
    std::string message;
    std::size_t offset = 0;
  };

  /// Absent if the document was read.
  const std::optional<Error>& error() const { return error_; }

  /// Where the start tag of `element` begins. Inside an entity: where the entity is named.
  std::size_t offsetOf(XmlElement element) const;

  /// Where the byte `offset` of `element.text()` comes from: the character itself, or the reference
  /// that stands for it. For an offset after the last byte: what follows the place of the last
  /// byte, or the element's start tag if it has no text.
  std::size_t offsetInText(XmlElement element, std::size_t offset) const;

 private:
  friend class XmlReader;

  // A part of the document's text that comes from one place: byte for byte, or as a whole from one
  // reference.
  struct Run {
    std::size_t text;
    std::size_t source;
    bool isVerbatim;
  };

  void addElement(std::size_t source) { elements_.push_back(source); }
  void addText(Run run);
  std::size_t sourceOf(std::size_t text) const;

  std::vector<std::size_t> elements_;  // in document order
  std::vector<Run> runs_;              // in the order of the text
  std::optional<Error> error_;
};

}  // namespace qorix
