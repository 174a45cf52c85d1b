#include "tools/preview/PreviewOperator.h"

#include <webkit2/webkit2.h>

#include <string>

#include "tools/preview/DecisionReason.h"
#include "tools/preview/Lines.h"
#include "tools/preview/Painting.h"

namespace {

using qorix::Dictionary;
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
  MyPushAdViewController::webViewDidFinishLoadForFrame(webView, frame);
  if (frame.isMainFrame && webView != nullptr && webView == legacyWebView() && pageDidLoad_) {
    pageDidLoad_();
  }
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
  controller->setPageDidLoad(pageDidLoad_);
  return controller;
}
