#include "webview/LinkMarks.h"

#include <string>

#include <qorix/platform/WebView.h>

#include "text/AsciiCase.h"

namespace qorix {

namespace {

/// The innermost node under the click; null if there was none.
std::shared_ptr<DomNode> clickedNode(const Dictionary& actionInformation) {
  const Value* element = find(actionInformation, kWebActionElementKey);
  const auto* dictionary = element == nullptr ? nullptr : element->as<Dictionary>();
  const Value* node = dictionary == nullptr ? nullptr : find(*dictionary, kWebElementDomNodeKey);
  return node == nullptr ? nullptr : node->object<DomNode>();
}

}  // namespace

bool queryHoldsMark(const Url& url, std::string_view mark) {
  const auto query = url.query();
  return query && containsIgnoringCase(*query, mark);
}

bool classHoldsMark(const DomHtmlElement& element, std::string_view mark) {
  return element.className() && element.className()->find(mark) != std::string::npos;
}

bool isLinkClick(const Dictionary& actionInformation) {
  const Value* type = find(actionInformation, kWebActionNavigationTypeKey);
  const auto number = type == nullptr ? std::nullopt : type->integerValue();
  return number.value_or(0) == static_cast<int>(WebNavigationType::linkClicked);
}

bool isUserAct(const Dictionary& actionInformation) {
  const Value* isUsers = find(actionInformation, kWebActionIsUserActKey);
  return isUsers == nullptr || isUsers->booleanValue().value_or(true);
}

std::shared_ptr<DomHtmlElement> clickedElement(const Dictionary& actionInformation) {
  const auto node = clickedNode(actionInformation);
  if (const auto text = std::dynamic_pointer_cast<DomText>(node)) {
    return std::dynamic_pointer_cast<DomHtmlElement>(text->parentElement());
  }
  return std::dynamic_pointer_cast<DomHtmlElement>(node);
}

bool linkHoldsMark(const Url& url, const Dictionary& actionInformation, const LinkMark& mark) {
  if (queryHoldsMark(url, mark.inQuery)) {
    return true;
  }
  const auto element = mark.inClass.empty() ? nullptr : clickedElement(actionInformation);
  return element != nullptr && classHoldsMark(*element, mark.inClass);
}

bool isCloseControl(const Dictionary& actionInformation) {
  const auto element = std::dynamic_pointer_cast<DomHtmlElement>(clickedNode(actionInformation));
  return element != nullptr && element->idName() == kCloseControlId;
}

std::optional<Url> appStoreUrl(const Url& url) {
  constexpr std::string_view kSeparator = "://";
  const std::string_view text = url.absoluteString();
  const auto last = text.rfind(kSeparator);
  const auto rest = last == std::string_view::npos ? text : text.substr(last + kSeparator.size());
  return Url::parse("macappstore://" + std::string(rest));
}

}  // namespace qorix
