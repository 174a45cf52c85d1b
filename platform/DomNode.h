#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Object.h"

namespace qorix {

/// A node of the page as it was when the user acted: a snapshot, not a live reference into the
/// page.
class DomNode : public Object {};

/// An element of an HTML document.
class DomHtmlElement : public DomNode {
 public:
  DomHtmlElement(std::optional<std::string> idName, std::optional<std::string> className)
      : idName_(std::move(idName)), className_(std::move(className)) {}

  /// The id attribute.
  const std::optional<std::string>& idName() const { return idName_; }
  /// The class attribute, all names in one text.
  const std::optional<std::string>& className() const { return className_; }

 private:
  std::optional<std::string> idName_;
  std::optional<std::string> className_;
};

/// A piece of text.
class DomText : public DomNode {
 public:
  explicit DomText(std::shared_ptr<DomNode> parentElement)
      : parentElement_(std::move(parentElement)) {}

  /// The element that the text is directly in, or null.
  const std::shared_ptr<DomNode>& parentElement() const { return parentElement_; }

 private:
  std::shared_ptr<DomNode> parentElement_;
};

}  // namespace qorix
