#include <chrono>
#include <cstddef>
#include <string>

#include <qorix/MyPushAdViewController.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "text/TextLists.h"
#include "webview/HostIdentifier.h"
#include "webview/PageScripts.h"

namespace qorix {

namespace {

/// The page's list; empty if it is longer than any page needs, since the host waits while each
/// entry is looked up. There is room for 264 of the longest identifiers that a file system can
/// hold, and for more than a thousand ordinary ones.
std::string listOfPage(WebView& webView) {
  constexpr std::size_t kLongestList = 65536;
  std::string list = webView.stringByEvaluatingJavaScriptFromString(listPromoAppsScript());
  if (list.size() > kLongestList) {
    logLine("ZAM Ad page's list of applications is too long: " + std::to_string(list.size()) +
            " bytes");
    list.clear();
  }
  return list;
}

bool isInstalled(const Value& appId) {
  const auto* identifier = appId.as<std::string>();
  return identifier != nullptr && !identifier->empty() &&
         !platform().applicationRegistry->applicationUrlsForBundleIdentifier(*identifier).empty();
}

}  // namespace

bool MyPushAdViewController::isSupportAdFilterFeature(const std::shared_ptr<WebView>& webView) {
  return webView != nullptr &&
         webView->stringByEvaluatingJavaScriptFromString(filterSupportScript()) == "support";
}

void MyPushAdViewController::processAdFilterFeatureIfNeeded(
    const std::shared_ptr<WebView>& webView) {
  const bool isSupported = isSupportAdFilterFeature(webView);
  isAdFilterFeaturePutOff_ = !isSupported && webView != nullptr && putOffAdFilterFeature(*webView);
  if (isAdFilterFeaturePutOff_) {
    return;
  }
  if (!isSupported) {
    logLine("ZAM not support pad filter feature...");
    return;
  }
  if (webView == nullptr) {
    logLine("ZAM No valid webview...");
    return;
  }
  const std::string host = HostIdentifier::current();
  const Array appIds = parseArrayWithJSString(listOfPage(*webView));
  const Array installFlags = findAppInstallFlagsWithAppIds(appIds);
  webView->stringByEvaluatingJavaScriptFromString(
      postPromoAppInfoScript(host, convertToJSArrayWithStringArray(appIds),
                             convertToJSArrayWithStringArray(installFlags)));
}

/// Whether the page gave no answer because it is busy. A page that is busy each time it is asked
/// does not take part.
bool MyPushAdViewController::putOffAdFilterFeature(const WebView& webView) {
  constexpr int kMostPutOffs = 5;
  putOffs_ = webView.isPageAnswering() || putOffs_ == kMostPutOffs ? 0 : putOffs_ + 1;
  return putOffs_ > 0;
}

Array MyPushAdViewController::parseArrayWithJSString(const Value& value) {
  const auto* text = value.as<std::string>();
  if (text == nullptr) {
    return {};
  }
  const auto items = splitAtCommas(*text);
  return {items.begin(), items.end()};
}

Array MyPushAdViewController::findAppInstallFlagsWithAppIds(const std::optional<Array>& appIds) {
  using Clock = std::chrono::steady_clock;
  constexpr auto kLongestSlice = std::chrono::milliseconds(20);  // while the host is not served
  Array flags;
  auto sliceEnd = Clock::now() + kLongestSlice;
  for (const Value& appId : appIds.value_or(Array())) {
    flags.emplace_back(isInstalled(appId) ? "1" : "0");
    if (Clock::now() >= sliceEnd) {
      platform().mainRunLoop->serveHost();
      sliceEnd = Clock::now() + kLongestSlice;
    }
  }
  return flags;
}

std::string MyPushAdViewController::convertToJSArrayWithStringArray(
    const std::optional<Array>& texts) {
  if (!texts || texts->empty()) {
    return "[]";
  }
  std::string literal = "['";
  for (const Value& text : *texts) {
    if (&text != &texts->front()) {
      literal += "', '";
    }
    literal += text.description();
  }
  literal += "']";
  return literal;
}

}  // namespace qorix
