#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>

#include <qorix/platform/DomNode.h>

using JSCValue = struct _JSCValue;

namespace qorix::gtk {

/// Which click is behind a page's wish to follow a link. The page's watcher reports each click on a
/// link, first when it begins and again when it is over.
///
/// A user's click is over for the page when the engine asks whether the link may be followed. A
/// script's is not: the script goes on, while the question is already here. It waits until the
/// script has ended, so that the element can be looked at twice: as it was when the engine asked,
/// and as it is afterwards.
class PageClicks {
 public:
  struct Click {
    bool isInMainFrame = true;
    std::shared_ptr<DomNode> node;  // the innermost that was hit
  };
  /// Judges a link to be followed. Called once with the click behind it, or null when none is
  /// known.
  using Judge = std::function<void(const Click* click)>;

  PageClicks() = default;
  ~PageClicks();
  PageClicks(const PageClicks&) = delete;
  PageClicks& operator=(const PageClicks&) = delete;

  /// Takes a report of the page's watcher. May call judges.
  void take(JSCValue* report);

  /// Has `judge` called with the click on the link to `address`, at once or when it is over. A
  /// script that goes on for longer than kScriptTimeLimit is not waited for.
  void judge(const std::string& address, Judge judge);

  /// No click has any effect any more. Calls the judges that wait.
  void endAll();

 private:
  struct Reported;
  using List = std::list<std::shared_ptr<Reported>>;

  static void end(const std::shared_ptr<Reported>& click, JSCValue* report);

  List clicks_;  // those that are not over, the newest first
};

}  // namespace qorix::gtk
