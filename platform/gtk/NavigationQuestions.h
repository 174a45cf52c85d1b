#pragma once

#include <memory>

#include "platform/WebView.h"
#include "platform/gtk/PageClicks.h"
#include "platform/gtk/UserActs.h"

using GtkWidget = struct _GtkWidget;
using JSCValue = struct _JSCValue;
using WebKitPolicyDecision = struct _WebKitPolicyDecision;

namespace qorix::gtk {

/// Asks one web view's delegate whether the page may be left for another address, and tells it
/// which click is behind that. Main thread only.
class NavigationQuestions {
 public:
  /// `widget` is the web view's; see `stop`.
  NavigationQuestions(GtkWidget* widget, std::weak_ptr<WebViewDelegate> delegate);
  NavigationQuestions(const NavigationQuestions&) = delete;
  NavigationQuestions& operator=(const NavigationQuestions&) = delete;

  /// Has the engine's question `decision` answered, which `asker` asks, at once or later. False if
  /// there is no delegate: the question is then left to the engine.
  bool answer(WebKitPolicyDecision* decision, const std::shared_ptr<WebView>& asker);

  /// Takes a report of the page's watcher about a click.
  void takeClick(JSCValue* report) { clicks_.take(report); }

  /// The page is gone: what waits for a click's end is answered now.
  void endPage() { clicks_.endAll(); }

  /// Listens to `widget` no more. To be called before either is destroyed.
  void stop(GtkWidget* widget) { userActs_.stop(widget); }

 private:
  using Delegate = std::weak_ptr<WebViewDelegate>;

  static void ask(const Delegate& asked, WebKitPolicyDecision* decision,
                  const std::shared_ptr<WebView>& asker, Dictionary information,
                  const PageClicks::Click* click);

  const Delegate delegate_;
  PageClicks clicks_;
  UserActs userActs_;
};

}  // namespace qorix::gtk
