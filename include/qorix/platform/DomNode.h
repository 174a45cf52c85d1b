#pragma once

// Platform: values and ports.

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <qorix/Export.h>
#include <qorix/platform/Object.h>

namespace qorix {

/// A node of the page: what the platform knows of it, not a live reference into the page.
class QORIX_EXPORT DomNode : public Object {};

/// An element of an HTML document. The platform renews it when it hears more of it.
class QORIX_EXPORT DomHtmlElement : public DomNode {
 public:
  /// An element with these attributes; what the element lacks is absent.
  DomHtmlElement(std::optional<std::string> idName, std::optional<std::string> className)
      : idName_(std::move(idName)), className_(std::move(className)) {}

  /// The id attribute.
  const std::optional<std::string>& idName() const { return idName_; }
  /// The class attribute, all names in one text.
  const std::optional<std::string>& className() const { return className_; }

  /// The page has changed the element. Main thread.
  void renew(std::optional<std::string> idName, std::optional<std::string> className) {
    idName_ = std::move(idName);
    className_ = std::move(className);
  }

 private:
  std::optional<std::string> idName_;
  std::optional<std::string> className_;
};

/// A piece of text.
class QORIX_EXPORT DomText : public DomNode {
 public:
  /// A text directly in that element; null for a text in none.
  explicit DomText(std::shared_ptr<DomNode> parentElement)
      : parentElement_(std::move(parentElement)) {}

  /// The element that the text is directly in, or null.
  const std::shared_ptr<DomNode>& parentElement() const { return parentElement_; }

 private:
  std::shared_ptr<DomNode> parentElement_;
};

}  // namespace qorix
