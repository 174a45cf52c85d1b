#include <chrono>
#include <string>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/MyPushAdViewController.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "webview/LinkMarks.h"
#include "webview/OpeningLimit.h"

namespace qorix {

namespace {

constexpr const char* kMethod =
    "-[MyPushAdViewController "
    "webView:decidePolicyForNavigationAction:request:frame:decisionListener:]";

double secondsNow() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

}  // namespace

void MyPushAdViewController::openUrl(const std::optional<Url>& url,
                                     const Dictionary& actionInformation, int line) {
  if (url && !mayBeOpened(url->scheme())) {
    logLine("ZAM Ad page may not open addresses of the scheme " + std::string(url->scheme()));
    return;
  }
  if (url && !isUserAct(actionInformation)) {
    if (openingLimit_ == nullptr) {
      openingLimit_ = std::make_shared<OpeningLimit>();
    }
    const auto answer = openingLimit_->ask(secondsNow());
    if (answer == OpeningLimit::Answer::refuseFirst) {
      logLine("ZAM Ad page opens too many addresses without the user");
    }
    if (answer != OpeningLimit::Answer::open) {
      return;
    }
  }
  logCheck(kMethod, line, "Opening URL:[" + (url ? url->absoluteString() : "(null)") + "]");
  if (url) {
    platform().workspace->openUrl(*url);
  }
}

void MyPushAdViewController::webViewDecidePolicyForNavigationAction(
    const std::shared_ptr<WebView>& webView, const Dictionary& actionInformation, const Url& url,
    const WebFrame& /*frame*/, WebPolicyDecisionListener& listener) {
  if (!isLinkClick(actionInformation) || webView != legacyWebView()) {
    listener.use();
    return;
  }
  if (const auto element = findActionHTMLElementForNavigationAction(actionInformation)) {
    platform().mainRunLoop->performAfterDelay(0, [self = weak_from_this().lock(), element] {
      if (self != nullptr) {
        self->handleUserIsTriggeringNavigation(element);
      }
    });
  }
  const bool forAppStore = isCapableForMacAppStore(url);
  const bool forBrowser = isCapableForOpenInBrowser(url, actionInformation);
  const bool forPurchase = isCapableForOpenIAP(url, actionInformation);
  if (forAppStore) {
    listener.ignore();
    openUrl(appStoreUrl(url), actionInformation, 353);
  } else if (forBrowser) {
    listener.ignore();
    openUrl(url, actionInformation, 361);
  } else if (forPurchase) {
    listener.ignore();
    handleOpenIAPButtonClickedWithURL(url);
  } else if (isCloseButtonActionForNavigationAction(actionInformation)) {
    listener.ignore();
    handleCloseButtonClicked();
  } else {
    listener.use();
  }
}

bool MyPushAdViewController::isCapableForMacAppStore(const Url& url) {
  return queryHoldsMark(url, kAppStoreMark.inQuery);
}

bool MyPushAdViewController::isCapableForOpenInBrowser(const Url& url,
                                                       const Dictionary& actionInformation) {
  return linkHoldsMark(url, actionInformation, kBrowserMark);
}

bool MyPushAdViewController::isCapableForOpenIAP(const Url& url,
                                                 const Dictionary& actionInformation) {
  return linkHoldsMark(url, actionInformation, kPurchaseMark);
}

bool MyPushAdViewController::isCloseButtonActionForNavigationAction(
    const Dictionary& actionInformation) {
  return isCloseControl(actionInformation);
}

std::shared_ptr<DomHtmlElement> MyPushAdViewController::findActionHTMLElementForNavigationAction(
    const Dictionary& actionInformation) {
  return clickedElement(actionInformation);
}

void MyPushAdViewController::handleUserIsTriggeringNavigation(
    const std::shared_ptr<Object>& element) {
  const auto htmlElement = std::dynamic_pointer_cast<DomHtmlElement>(element);
  if (htmlElement == nullptr) {
    return;
  }
  Dictionary userInfo;
  userInfo[kPushAdActionHTMLElementKey] = htmlElement;
  if (const auto& idName = htmlElement->idName(); idName && !idName->empty()) {
    userInfo[kPushAdActionHTMLElementIdNameKey] = *idName;
  }
  if (const auto& className = htmlElement->className(); className && !className->empty()) {
    userInfo[kPushAdActionHTMLElementClassNameKey] = *className;
  }
  MyPushAdUtil::postOnMainThreadNotificationName(kPushAdIsTriggeringNavigationNotification,
                                                 weak_from_this().lock(), userInfo);
}

}  // namespace qorix
