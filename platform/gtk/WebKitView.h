#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <qorix/platform/WebView.h>

#include "platform/gtk/LoadReports.h"
#include "platform/gtk/MainContextRunLoop.h"
#include "platform/gtk/NavigationQuestions.h"
#include "platform/gtk/PageFocus.h"
#include "platform/gtk/PageWatchdog.h"
#include "platform/gtk/ScriptEvaluation.h"
#include "platform/gtk/WidgetView.h"

using gboolean = int;
using GdkEvent = union _GdkEvent;
using GError = struct _GError;
using WebKitJavascriptResult = struct _WebKitJavascriptResult;
using WebKitPolicyDecision = struct _WebKitPolicyDecision;
using WebKitUserContentFilter = struct _WebKitUserContentFilter;
using WebKitUserContentManager = struct _WebKitUserContentManager;
using WebKitWebView = struct _WebKitWebView;

namespace qorix::gtk {

/// The web view port on a WebKitWebView, which owns it.
///
/// Loads are reported when the page answers, and never while a script is being evaluated. The
/// delegate's methods for mouse moves and the start of a load are never called: nobody uses them.
///
/// A page that the PageWatchdog finds silent is ended. While there is no page, the view that holds
/// this one is hidden, so that it does not take the pointer.
class WebKitView : public WidgetView<WebView> {
 public:
  /// The View of `webView`, into which nothing has been loaded yet.
  static std::shared_ptr<WebKitView> create(WebKitWebView* webView,
                                            std::shared_ptr<MainContextRunLoop> runLoop,
                                            std::weak_ptr<WebViewDelegate> delegate);

  WebKitView(WebKitWebView* webView, std::shared_ptr<MainContextRunLoop> runLoop,
             std::weak_ptr<WebViewDelegate> delegate);

  void loadHtmlString(const std::string& html, const Url& baseUrl) override;
  void endPage() override;
  std::string stringByEvaluatingJavaScriptFromString(const std::string& script) override;
  bool isPageAnswering() const override { return scripts_.isPageAnswering(); }
  void performWhenPageAnswers(std::function<void()> task) override;
  void setDrawsBackground(bool draws) override;

 private:
  /// What is to be loaded, until the load is committed.
  struct WantedPage {
    std::string html;
    Url baseUrl;
    bool isAskedFor = false;
  };

  void widgetWillBeDestroyed() override;
  WebKitWebView* webView() const;
  void loadWantedPage(WebKitUserContentFilter* fileFilter);
  void endWebProcess(const std::string& reason);
  void replaceSilentPage();
  void setHolderHidden(bool isHidden);
  void watchPage();
  void reportFinishedLoad(const WebFrame& frame);
  void whenPageAnswers(std::function<void(bool isThere)> act);

  static void onLoadChanged(WebKitWebView* webView, int event, void* self);
  static gboolean onLoadFailed(WebKitWebView* webView, int event, const char* uri, GError* error,
                               void* self);
  static gboolean onDecidePolicy(WebKitWebView* webView, WebKitPolicyDecision* decision, int type,
                                 void* self);
  static void onMessage(WebKitUserContentManager* manager, WebKitJavascriptResult* message,
                        void* self);
  static gboolean onUserAct(WebKitWebView* webView, GdkEvent* event, void* self);
  static void onProcessTerminated(WebKitWebView* webView, int reason, void* self);

  const std::shared_ptr<MainContextRunLoop> runLoop_;
  const std::weak_ptr<WebViewDelegate> delegate_;
  ScriptEvaluation scripts_;
  const std::shared_ptr<LoadReports> loadReports_;
  bool hasLoadFailed_ = false;
  std::optional<WantedPage> wantedPage_;
  bool isPageToEnd_ = false;
  std::string endReason_;
  bool isHolderHidden_ = false;
  NavigationQuestions navigation_;
  PageFocus focus_;
  const std::shared_ptr<PageWatchdog> watchdog_;
};

}  // namespace qorix::gtk
