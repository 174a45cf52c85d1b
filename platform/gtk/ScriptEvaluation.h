#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/gtk/MainContextRunLoop.h"

using WebKitWebView = struct _WebKitWebView;

namespace qorix::gtk {

/// Evaluates scripts in the main frame of one web view's page, by the library's module in the web
/// process. A script gets no right that the page does not have: it does not count as an act of the
/// user. Main thread only.
class ScriptEvaluation {
 public:
  explicit ScriptEvaluation(std::shared_ptr<MainContextRunLoop> runLoop);

  /// As WebView::stringByEvaluatingJavaScriptFromString. The caller keeps this object alive.
  std::string evaluate(WebKitWebView* webView, const std::string& script);

  /// As WebView::isPageAnswering.
  bool isPageAnswering() const { return outstanding_.expired(); }

  /// Calls `act` once: with true when the page answers, with false if it is gone before. The call
  /// comes from any loop that runs then, or at once if there is no page.
  void whenPageAnswers(WebKitWebView* webView, std::function<void(bool isThere)> act);

  /// A page is about to be loaded: scripts can be evaluated from now on.
  void beginPage() { hasPage_ = true; }

  /// The page is gone, with its process or its web view: a call that waits for it returns, and
  /// nothing is evaluated until another page is loaded.
  void endPage() { hasPage_ = false; }

 private:
  struct Pending;

  const std::shared_ptr<MainContextRunLoop> runLoop_;
  // The last script that the page was left alone with; it finishes them in their order.
  std::weak_ptr<Pending> outstanding_;
  int leftAlone_ = 0;  // how many scripts, since it had last finished all
  bool hasPage_ = true;
};

}  // namespace qorix::gtk
