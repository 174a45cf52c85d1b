#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/WebView.h"
#include "platform/gtk/MainContextRunLoop.h"
#include "platform/gtk/WidgetView.h"

using gboolean = int;
using GError = struct _GError;
using WebKitJavascriptResult = struct _WebKitJavascriptResult;
using WebKitPolicyDecision = struct _WebKitPolicyDecision;
using WebKitUserContentManager = struct _WebKitUserContentManager;
using WebKitWebContext = struct _WebKitWebContext;
using WebKitWebView = struct _WebKitWebView;

namespace qorix::gtk {

/// What all web views of advertisements share: nothing of it is ever stored, and nothing is ever
/// downloaded. Owned by the process.
WebKitWebContext* adWebContext();

/// The web view port on a WebKitWebView, which owns it.
///
/// Loads are reported from the run loop, so never while a script is being evaluated. Of the
/// delegate's methods mouse moves and the start of a load are never called: nobody listens to them.
class WebKitView : public WidgetView<WebView> {
 public:
  /// The View of `webView`, new to the page: nothing has been loaded into it.
  static std::shared_ptr<WebKitView> create(WebKitWebView* webView,
                                            std::shared_ptr<MainContextRunLoop> runLoop,
                                            std::weak_ptr<WebViewDelegate> delegate);

  WebKitView(WebKitWebView* webView, std::shared_ptr<MainContextRunLoop> runLoop,
             std::weak_ptr<WebViewDelegate> delegate);

  void loadHtmlString(const std::string& html, const Url& baseUrl) override;
  std::string stringByEvaluatingJavaScriptFromString(const std::string& script) override;
  void setDrawsBackground(bool draws) override;

 private:
  struct Evaluation;
  struct Click {
    bool isInMainFrame;
    std::shared_ptr<DomNode> node;
  };

  void widgetWillBeDestroyed() override;
  WebKitWebView* webView() const;
  void refuseRequests();
  void watchPage();
  void reportFinishedLoad(const WebFrame& frame);
  bool decideNavigation(WebKitPolicyDecision* decision);

  static void onLoadChanged(WebKitWebView* webView, int event, void* self);
  static gboolean onLoadFailed(WebKitWebView* webView, int event, const char* uri, GError* error,
                               void* self);
  static gboolean onDecidePolicy(WebKitWebView* webView, WebKitPolicyDecision* decision, int type,
                                 void* self);
  static void onMessage(WebKitUserContentManager* manager, WebKitJavascriptResult* message,
                        void* self);
  static void onProcessTerminated(WebKitWebView* webView, int reason, void* self);

  const std::shared_ptr<MainContextRunLoop> runLoop_;
  const std::weak_ptr<WebViewDelegate> delegate_;
  std::weak_ptr<Evaluation> outstanding_;  // given up, but not yet back from the page
  std::optional<Click> click_;             // having its effect now
  bool hasLoadFailed_ = false;
};

}  // namespace qorix::gtk
