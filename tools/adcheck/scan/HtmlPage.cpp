#include "tools/adcheck/scan/HtmlPage.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <new>
#include <span>
#include <utility>
#include <vector>

#include "text/AsciiCase.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

bool isElement(const GumboNode& node) {
  return node.type == GUMBO_NODE_ELEMENT || node.type == GUMBO_NODE_TEMPLATE;
}

std::span<void* const> childrenOf(const GumboNode& node) {
  const GumboVector& children = node.v.element.children;
  return {children.data, children.length};
}

const GumboNode& asNode(const void* child) { return *static_cast<const GumboNode*>(child); }

bool isOneOf(const GumboNode& node, std::span<const GumboTag> tags) {
  return std::ranges::find(tags, node.v.element.tag) != tags.end();
}

/// Where the contents of a noscript element end. Browsers that run scripts read them as text; the
/// parser reads elements, and in a head it ends the noscript before its end tag.
const char* endOfNoscript(GumboStringPiece tag, std::string_view page) {
  constexpr std::string_view kEnd = "</noscript";
  return std::search(tag.data, page.data() + page.size(), kEnd.begin(), kEnd.end(),
                     [](char a, char b) { return asciiLower(a) == b; });
}

constexpr std::array kInvisible = {GUMBO_TAG_BR,    GUMBO_TAG_WBR,      GUMBO_TAG_SCRIPT,
                                   GUMBO_TAG_STYLE, GUMBO_TAG_TEMPLATE, GUMBO_TAG_NOSCRIPT};

// The parser asks for some pieces of memory for each tag and each attribute. Of certain pages it
// takes a time that grows with the square of their number: for so many, some seconds.
constexpr std::size_t kMostPieces = 100'000;

/// One run of the parser, which is C: it can pass on no exception and does not look for null. All
/// of its memory is freed in another way, so it can be left from within.
struct Parsing {
  std::pmr::memory_resource& memory;
  std::size_t pieces = 0;
  std::jmp_buf end = {};
};

void* allocate(void* userdata, std::size_t size) noexcept {
  auto& parsing = *static_cast<Parsing*>(userdata);
  void* piece = nullptr;
  try {
    piece = ++parsing.pieces > kMostPieces ? nullptr : parsing.memory.allocate(size);
  } catch (const std::bad_alloc&) {
    piece = nullptr;
  }
  if (piece == nullptr) {
    std::longjmp(parsing.end, 1);
  }
  return piece;
}

/// Null if it takes too many pieces of memory, or there is none left.
const GumboNode* parse(std::string_view page, std::pmr::memory_resource& memory) {
  Parsing parsing{.memory = memory};
  GumboOptions options = kGumboDefaultOptions;
  options.userdata = &parsing;
  options.allocator = allocate;
  options.deallocator = [](void* /*parsing*/, void* /*piece*/) {};  // all at once
  options.max_errors = 0;  // each would hold the names of all open elements
  if (setjmp(parsing.end) != 0) {
    return nullptr;
  }
  return gumbo_parse_with_options(&options, page.data(), page.size())->root;
}

}  // namespace

bool HtmlElement::isLink() const {
  return (is(GUMBO_TAG_A) || is(GUMBO_TAG_AREA)) && attribute("href").has_value();
}

std::optional<HtmlAttribute> HtmlElement::attribute(const char* name) const {
  const auto* found = gumbo_get_attribute(&node_->v.element.attributes, name);
  if (found == nullptr) {
    return std::nullopt;
  }
  const std::string_view written(found->original_value.data, found->original_value.length);
  const char* place =
      written.empty() ? found->original_name.data + found->original_name.length : written.data();
  const bool isQuoted = written.starts_with('"') || written.starts_with('\'');
  return HtmlAttribute{found->value,
                       static_cast<std::size_t>(place - page_.data()) + (isQuoted ? 1 : 0)};
}

bool HtmlElement::anyVisibleChild(const std::function<bool(const HtmlElement&)>& condition) const {
  return std::ranges::any_of(childrenOf(*node_), [&](const void* child) {
    const GumboNode& node = asNode(child);
    return isElement(node) && !isOneOf(node, kInvisible) && condition(HtmlElement(page_, node));
  });
}

bool HtmlElement::holdsText() const {
  return std::ranges::any_of(childrenOf(*node_), [](const void* child) {
    const GumboNode& node = asNode(child);
    return node.type == GUMBO_NODE_TEXT && !trimmed(node.v.text.text).empty();
  });
}

HtmlPage::HtmlPage(std::string_view page, std::pmr::memory_resource* memory)
    : memory_(memory), page_(page), root_(parse(page, memory_)) {}

void HtmlPage::visit(const Visitor& visitor) const {
  if (root_ == nullptr) {
    return;
  }
  std::vector<std::pair<const GumboNode*, std::optional<HtmlElement>>> waiting = {
      {root_, std::nullopt}};
  const char* hiddenUntil = page_.data();
  while (!waiting.empty()) {
    auto [node, link] = waiting.back();
    waiting.pop_back();
    const GumboStringPiece tag = node->v.element.original_tag;
    const bool isHidden = tag.length > 0 && tag.data < hiddenUntil;
    if (isHidden || node->type == GUMBO_NODE_TEMPLATE) {
      continue;
    }
    const HtmlElement element(page_, *node);
    if (element.is(GUMBO_TAG_NOSCRIPT)) {
      hiddenUntil = endOfNoscript(tag, page_);
    }
    if (element.isLink()) {
      link = element;
    }
    visitor(element, link);
    const auto known = static_cast<std::ptrdiff_t>(waiting.size());
    for (const void* child : childrenOf(*node)) {
      if (isElement(asNode(child))) {
        waiting.emplace_back(&asNode(child), link);
      }
    }
    std::reverse(waiting.begin() + known, waiting.end());  // the first child comes next
  }
}

bool HtmlPage::holdsScript() const {
  bool isFound = false;
  visit([&](const HtmlElement& element, const auto& /*link*/) {
    isFound |= element.is(GUMBO_TAG_SCRIPT);
  });
  return isFound;
}

}  // namespace qorix::tools::adcheck
