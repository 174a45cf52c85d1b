#include "tools/preview/PreviewOperator.h"

#include <webkit2/webkit2.h>

#include <string>
#include <string_view>

#include <qorix/MyPushAdManager.h>

#include "tools/preview/DecisionReason.h"
#include "tools/preview/Lines.h"
#include "tools/preview/Painting.h"
#include "webview/PageContract.h"

namespace qorix::tools::preview {

namespace {

void printDecision(const std::string& answer, const std::string& kind, const std::string& address,
                   const std::string& reason) {
  printLine("decision", answer + " (" + kind + ") " + address + " - " + reason);
}

/// Passes the decision on after it is printed, so that its effects are printed later.
class ReportingListener : public WebPolicyDecisionListener {
 public:
  ReportingListener(WebPolicyDecisionListener& next, std::function<void(bool use)> report)
      : next_(next), report_(std::move(report)) {}

  void use() override {
    report_(true);
    next_.use();
  }
  void ignore() override {
    report_(false);
    next_.ignore();
  }

 private:
  WebPolicyDecisionListener& next_;
  std::function<void(bool use)> report_;
};

/// Why the page takes no part. Evaluates one more script, which calls none of the page's functions.
std::string missingFunctions(WebView& webView) {
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

/// Whether the identifier breaks the script that reports to the page: nothing in it is escaped.
bool breaksAnswer(std::string_view identifier) {
  return identifier.find_first_of("'\\\r\n") != identifier.npos;
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
    const std::shared_ptr<WebView>& webView, const Dictionary& actionInformation, const Url& url,
    const WebFrame& frame, WebPolicyDecisionListener& listener) {
  ReportingListener reporting(listener, [&](bool use) {
    printDecision(use ? "use" : "ignore", navigationKind(actionInformation), url.absoluteString(),
                  decisionReason(*this, webView == legacyWebView(), url, actionInformation, use));
  });
  MyPushAdViewController::webViewDecidePolicyForNavigationAction(webView, actionInformation, url,
                                                                 frame, reporting);
}

void PreviewController::webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& webView,
                                                     const WebFrame& frame) {
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
bool PreviewController::isSupportAdFilterFeature(const std::shared_ptr<WebView>& webView) {
  takesPart_ = MyPushAdViewController::isSupportAdFilterFeature(webView);
  return *takesPart_;
}

std::string PreviewController::describeBridge(WebView& webView) {
  if (!*takesPart_) {
    return "the page does not take part: " + missingFunctions(webView);
  }
  const auto manager = MyPushAdManager::sharedPushAdManager();
  const std::string host = manager->appBundleIdentifier().value_or("");
  std::string text = "host " + host + ", promotes ";
  std::string breaking = breaksAnswer(host) ? host : "";
  const auto lookups = registry_->takeLookups();
  if (lookups.empty()) {
    text += "nothing: " + std::string(kObtainPromoAppIds) +
            " gave no text that names any (a list is none: join it with commas)";
  }
  const char* between = "";
  for (const auto& [identifier, isInstalled] : lookups) {
    text += between + identifier + (isInstalled ? " (installed)" : " (not installed)");
    between = ", ";
    breaking = breaking.empty() && breaksAnswer(identifier) ? identifier : breaking;
  }
  return breaking.empty() ? text
                          : text + "; the page receives a wrong list or none: \"" + breaking +
                                "\" holds a quote, a backslash or a line break";
}

void PreviewController::viewDidLoad() {
  MyPushAdViewController::viewDidLoad();
  if (const auto webView = legacyWebView()) {
    g_signal_connect(widgetOf(*webView), "create", G_CALLBACK(newWindowIsAskedFor), nullptr);
  }
}

std::shared_ptr<MyPushAdViewController> PreviewOperator::createPushAdViewController(
    std::int64_t mode) {
  auto controller = PreviewController::createInstanceWithPushAdMode<PreviewController>(mode);
  controller->setRegistry(registry_);
  controller->setPageDidLoad(pageDidLoad_);
  return controller;
}

}  // namespace qorix::tools::preview
