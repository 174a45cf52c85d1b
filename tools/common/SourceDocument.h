#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "definition/XmlDocument.h"
#include "definition/XmlSourceMap.h"
#include "tools/common/SourcePosition.h"

namespace qorix::tools {

/// A document and the places of its parts in its text, which must outlive it.
class SourceDocument {
 public:
  explicit SourceDocument(std::string_view text)
      : lines_(text), document_(XmlDocument::parse(text, map_)) {}
  SourceDocument(const SourceDocument&) = delete;
  SourceDocument& operator=(const SourceDocument&) = delete;

  /// Null when the text is not well formed.
  const XmlDocument* document() const { return document_ ? &*document_ : nullptr; }
  const XmlSourceMap& map() const { return map_; }

  SourcePosition positionOf(std::size_t offset) const { return lines_.positionOf(offset); }
  SourcePosition positionOf(XmlElement element) const { return positionOf(map_.offsetOf(element)); }

 private:
  SourceLines lines_;
  XmlSourceMap map_;
  std::optional<XmlDocument> document_;
};

}  // namespace qorix::tools
