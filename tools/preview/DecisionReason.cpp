#include "tools/preview/DecisionReason.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <qorix/platform/DomNode.h>
#include <qorix/platform/WebView.h>

#include "text/AsciiCase.h"
#include "webview/LinkMarks.h"
#include "webview/PageScripts.h"

namespace {

using qorix::asciiLower;
using qorix::Dictionary;
using qorix::DomHtmlElement;
using qorix::kAppStoreMark;
using qorix::kBrowserMark;
using qorix::kPurchaseMark;
using qorix::LinkMark;
using qorix::Url;
using qorix::WebNavigationType;

/// The parameter of the query in which the mark was found, between the nearest "&".
std::string parameterWith(const Url& url, std::string_view mark) {
  const std::string query(url.query().value_or(""));
  const auto found = asciiLower(query).find(mark);
  const auto before = query.rfind('&', found);
  const auto begin = before == std::string::npos ? 0 : before + 1;
  return query.substr(begin, query.find('&', found) - begin);
}

std::string foundMark(const LinkMark& mark, const Url& url, const Dictionary& actionInformation) {
  if (queryHoldsMark(url, mark.inQuery)) {
    const std::string parameter = parameterWith(url, mark.inQuery);
    std::string where = "the query holds " + std::string(mark.inQuery);
    return parameter == mark.inQuery ? where : where + " (in " + parameter + ")";
  }
  const auto element = clickedElement(actionInformation);
  const bool hasClass =
      element != nullptr && !mark.inClass.empty() && classHoldsMark(*element, mark.inClass);
  if (!hasClass) {
    return "its mark was found";
  }
  std::string where = "the clicked element's class holds " + std::string(mark.inClass);
  return *element->className() == mark.inClass ? where
                                               : where + " (in " + *element->className() + ")";
}

std::string describe(const DomHtmlElement& element) {
  const auto quoted = [](const std::optional<std::string>& text) {
    return text && !text->empty() ? "\"" + *text + "\"" : "none";
  };
  return "id " + quoted(element.idName()) + ", class " + quoted(element.className());
}

bool isTextOfCloseControl(const Dictionary& actionInformation) {
  const auto element = clickedElement(actionInformation);
  return element != nullptr && element->idName() == qorix::kCloseControlId;
}

bool classHoldsMarkInOtherCase(const DomHtmlElement& element) {
  const std::string names = asciiLower(element.className().value_or(""));
  return names.find(kBrowserMark.inClass) != std::string::npos ||
         names.find(kPurchaseMark.inClass) != std::string::npos;
}

/// What an author who expected something else may want to know.
std::string hintForUnmarked(const Dictionary& actionInformation) {
  const auto element = clickedElement(actionInformation);
  if (element == nullptr) {
    return "; no element of the page is known to have been clicked";
  }
  std::string hint = "; clicked: the element with " + describe(*element);
  if (isTextOfCloseControl(actionInformation)) {
    return hint + "; its text was hit, and only the close control itself closes";
  }
  if (classHoldsMarkInOtherCase(*element)) {
    return hint + "; marks in a class are in small letters";
  }
  return hint;
}

}  // namespace

std::string navigationKind(const Dictionary& actionInformation) {
  if (qorix::isLinkClick(actionInformation)) {
    return "link click";
  }
  const qorix::Value* type = find(actionInformation, qorix::kWebActionNavigationTypeKey);
  switch (static_cast<WebNavigationType>(type->integerValue().value_or(0))) {
    case WebNavigationType::formSubmitted:
      return "form submission";
    case WebNavigationType::backForward:
      return "back or forward";
    case WebNavigationType::reload:
      return "reload";
    case WebNavigationType::formResubmitted:
      return "form resubmission";
    default:
      return "load";
  }
}

std::string decisionReason(qorix::MyPushAdViewController& controller, bool isOwnWebView,
                           const Url& url, const Dictionary& actionInformation, bool use) {
  if (!qorix::isLinkClick(actionInformation) || !isOwnWebView) {
    return !use           ? "for a reason that is not known here"
           : isOwnWebView ? "let through: only link clicks are looked at"
                          : "let through: another web view asks";
  }
  const bool forAppStore = controller.isCapableForMacAppStore(url);
  const bool forBrowser = controller.isCapableForOpenInBrowser(url, actionInformation);
  const bool forPurchase = controller.isCapableForOpenIAP(url, actionInformation);
  const bool closes = controller.isCloseButtonActionForNavigationAction(actionInformation);
  if (use != !(forAppStore || forBrowser || forPurchase || closes)) {
    return "for a reason that is not known here";
  }
  if (forAppStore) {
    return "opens the App Store: " + foundMark(kAppStoreMark, url, actionInformation);
  }
  if (forBrowser) {
    return "opens the browser: " + foundMark(kBrowserMark, url, actionInformation);
  }
  if (forPurchase) {
    return "asks the host for the purchase: " + foundMark(kPurchaseMark, url, actionInformation);
  }
  if (closes) {
    std::string what = controller.pushAdMode() == qorix::MyPushAdModePopup
                           ? "does nothing, a pop-up is closed by its window"
                           : "closes the banner";
    return what + ": the clicked element has the id " + std::string(qorix::kCloseControlId);
  }
  return "followed inside the ad: no mark was found" + hintForUnmarked(actionInformation);
}
