#pragma once

#include <gumbo.h>

#include <cstddef>
#include <functional>
#include <memory_resource>
#include <optional>
#include <string_view>

namespace qorix::tools::adcheck {

/// One attribute of an element.
struct HtmlAttribute {
  std::string_view value;  // without references such as "&amp;"
  std::size_t offset = 0;  // of the value, a byte of the page
};

/// One element of a page, which must outlive it.
class HtmlElement {
 public:
  HtmlElement(std::string_view page, const GumboNode& node) : page_(page), node_(&node) {}

  bool is(GumboTag tag) const { return node_->v.element.tag == tag; }

  /// Whether it is an `a` or `area` element with an address.
  bool isLink() const;

  std::optional<HtmlAttribute> attribute(const char* name) const;

  /// Whether the condition holds for a child element that is on the screen and so takes clicks.
  bool anyVisibleChild(const std::function<bool(const HtmlElement&)>& condition) const;

  /// Whether one of its own texts is more than blanks.
  bool holdsText() const;

 private:
  std::string_view page_;
  const GumboNode* node_;
};

/// An HTML page as a browser's parser builds it. What scripts make of it is not seen.
class HtmlPage {
 public:
  /// `page` must outlive it, and so must `memory`.
  explicit HtmlPage(std::string_view page,
                    std::pmr::memory_resource* memory = std::pmr::get_default_resource());
  HtmlPage(const HtmlPage&) = delete;
  HtmlPage& operator=(const HtmlPage&) = delete;

  /// Whether the page was not read: it has many thousands of tags and attributes, or there is
  /// not enough memory. It then seems to be empty.
  bool isTooLarge() const { return root_ == nullptr; }

  /// Calls `visit` for each element but those in a template or noscript, with the innermost link
  /// around it or the link that it is itself.
  using Visitor = std::function<void(const HtmlElement&, const std::optional<HtmlElement>& link)>;
  void visit(const Visitor& visitor) const;

  bool holdsScript() const;

 private:
  // Freed at once: the parser's own function recurses once per level of nesting.
  std::pmr::monotonic_buffer_resource memory_;
  std::string_view page_;
  const GumboNode* root_;  // null if the page was not read
};

}  // namespace qorix::tools::adcheck
