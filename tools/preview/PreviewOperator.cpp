#include "tools/preview/PreviewOperator.h"

#include <webkit2/webkit2.h>

#include <string>
#include <string_view>

#include <qorix/MyPushAdManager.h>

#include "tools/preview/DecisionReason.h"
#include "tools/preview/Lines.h"
#include "tools/preview/Painting.h"
#include "webview/PageContract.h"

namespace {

using qorix::Dictionary;
using qorix::kObtainPromoAppIds;
using qorix::kPostPromoAppInfo;
using qorix::Url;

void printDecision(const std::string& answer, const std::string& kind, const std::string& address,
                   const std::string& reason) {
  printLine("decision", answer + " (" + kind + ") " + address + " - " + reason);
}

/// Passes the answer on, after a line about it: what comes of it is told behind it.
class TellingListener : public qorix::WebPolicyDecisionListener {
 public:
  TellingListener(qorix::WebPolicyDecisionListener& next, std::function<void(bool use)> tell)
      : next_(next), tell_(std::move(tell)) {}

  void use() override {
    tell_(true);
    next_.use();
  }
  void ignore() override {
    tell_(false);
    next_.ignore();
  }

 private:
  qorix::WebPolicyDecisionListener& next_;
  std::function<void(bool use)> tell_;
};

/// Why the page takes no part. Asks it once more, but calls nothing of it.
std::string missingFunctions(qorix::WebView& webView) {
  const auto isMissing = [&webView](std::string_view name) {
    return webView.stringByEvaluatingJavaScriptFromString("typeof(" + std::string(name) +
                                                          ") !== 'function'") == "true";
  };
  const bool isListMissing = isMissing(kObtainPromoAppIds);
  const bool isPostMissing = isMissing(kPostPromoAppInfo);
  if (isListMissing && isPostMissing) {
    return "it defines neither function";
  }
  if (!isListMissing && !isPostMissing) {
    return "it gives no answer";
  }
  return "it defines no function " +
         std::string(isListMissing ? kObtainPromoAppIds : kPostPromoAppInfo);
}

// The library is not asked about new windows; the web view makes none.
GtkWidget* newWindowIsAskedFor(WebKitWebView* /*webView*/, WebKitNavigationAction* action) {
  const char* address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  printDecision("none", "new window", address == nullptr ? "" : address,
                "does nothing: an advertisement opens no window; leave the link's target out");
  return nullptr;
}

}  // namespace

void PreviewController::webViewDecidePolicyForNavigationAction(
    const std::shared_ptr<qorix::WebView>& webView, const Dictionary& actionInformation,
    const Url& url, const qorix::WebFrame& frame, qorix::WebPolicyDecisionListener& listener) {
  TellingListener telling(listener, [&](bool use) {
    printDecision(use ? "use" : "ignore", navigationKind(actionInformation), url.absoluteString(),
                  decisionReason(*this, webView == legacyWebView(), url, actionInformation, use));
  });
  MyPushAdViewController::webViewDecidePolicyForNavigationAction(webView, actionInformation, url,
                                                                 frame, telling);
}

void PreviewController::webViewDidFinishLoadForFrame(const std::shared_ptr<qorix::WebView>& webView,
                                                     const qorix::WebFrame& frame) {
  const auto self = shared_from_this();
  takesPart_.reset();
  MyPushAdViewController::webViewDidFinishLoadForFrame(webView, frame);
  if (takesPart_) {
    printLine("bridge", describeBridge(*webView));
  }
  if (frame.isMainFrame && webView != nullptr && webView == legacyWebView() && pageDidLoad_) {
    pageDidLoad_();
  }
}

// The library asks this first, and the registry for each application next.
bool PreviewController::isSupportAdFilterFeature(const std::shared_ptr<qorix::WebView>& webView) {
  takesPart_ = MyPushAdViewController::isSupportAdFilterFeature(webView);
  return *takesPart_;
}

std::string PreviewController::describeBridge(qorix::WebView& webView) {
  if (!*takesPart_) {
    return "the page does not take part: " + missingFunctions(webView);
  }
  const auto manager = qorix::MyPushAdManager::sharedPushAdManager();
  std::string text = "host " + manager->appBundleIdentifier().value_or("") + ", promotes ";
  const auto lookups = registry_->takeLookups();
  if (lookups.empty()) {
    return text + "nothing: " + std::string(kObtainPromoAppIds) + " gave no text that names any";
  }
  const char* between = "";
  for (const auto& [identifier, isInstalled] : lookups) {
    text += between + identifier + (isInstalled ? " (installed)" : " (not installed)");
    between = ", ";
  }
  return text;
}

void PreviewController::viewDidLoad() {
  MyPushAdViewController::viewDidLoad();
  if (const auto webView = legacyWebView()) {
    g_signal_connect(widgetOf(*webView), "create", G_CALLBACK(newWindowIsAskedFor), nullptr);
  }
}

std::shared_ptr<qorix::MyPushAdViewController> PreviewOperator::createPushAdViewController(
    std::int64_t mode) {
  auto controller = PreviewController::createInstanceWithPushAdMode<PreviewController>(mode);
  controller->setRegistry(registry_);
  controller->setPageDidLoad(pageDidLoad_);
  return controller;
}
