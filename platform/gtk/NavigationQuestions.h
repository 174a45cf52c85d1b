#pragma once

#include <memory>

#include <qorix/platform/WebView.h>

#include "platform/gtk/PageClicks.h"
#include "platform/gtk/UserActs.h"

using GtkWidget = struct _GtkWidget;
using JSCValue = struct _JSCValue;
using WebKitPolicyDecision = struct _WebKitPolicyDecision;

namespace qorix::gtk {

/// Asks one web view's delegate whether the page may go to another address, and passes on which
/// click led there. Main thread only.
class NavigationQuestions {
 public:
  /// `widget` is the web view's; see `stop`.
  NavigationQuestions(GtkWidget* widget, std::weak_ptr<WebViewDelegate> delegate);
  NavigationQuestions(const NavigationQuestions&) = delete;
  NavigationQuestions& operator=(const NavigationQuestions&) = delete;

  /// Asks the delegate about the engine's question `decision`, in the name of the web view `asker`,
  /// at once or later. Returns false if there is no delegate: the engine then decides.
  bool answer(WebKitPolicyDecision* decision, const std::shared_ptr<WebView>& asker);

  /// Takes a report of the page's watcher about a click.
  void takeClick(JSCValue* report) { clicks_.take(report); }

  /// The page is gone: questions that wait for the end of a click are asked now.
  void endPage() { clicks_.endAll(); }

  /// Stops listening to `widget`. To be called before it or this object is destroyed.
  void stop(GtkWidget* widget) { userActs_.stop(widget); }

 private:
  using Delegate = std::weak_ptr<WebViewDelegate>;

  void judgeAndAsk(WebKitPolicyDecision* decision, const std::shared_ptr<WebView>& asker,
                   const Dictionary& information);
  static void ask(const Delegate& asked, WebKitPolicyDecision* decision,
                  const std::shared_ptr<WebView>& asker, Dictionary information,
                  const PageClicks::Click* click);

  const Delegate delegate_;
  PageClicks clicks_;
  UserActs userActs_;
};

}  // namespace qorix::gtk
