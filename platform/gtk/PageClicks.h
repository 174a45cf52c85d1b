#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>

#include <qorix/platform/DomNode.h>

using JSCValue = struct _JSCValue;

namespace qorix::gtk {

/// Finds the click that made a page ask to follow a link. The page's watcher reports each click on
/// a link, first when it begins and again when it is over.
///
/// When the engine asks whether the link may be followed, the page has finished with a user's
/// click, but not with a script's: the script is still running. Its question waits until the script
/// has ended, so that the element can be read twice: as it was when the engine asked, and as it is
/// afterwards.
class PageClicks {
 public:
  struct Click {
    bool isInMainFrame = true;
    std::shared_ptr<DomNode> node;  // the innermost one that was hit
  };
  /// Decides about a link to be followed. Called once, with the click that led to it, or with null
  /// if none is known.
  using Judge = std::function<void(const Click* click)>;

  PageClicks() = default;
  ~PageClicks();
  PageClicks(const PageClicks&) = delete;
  PageClicks& operator=(const PageClicks&) = delete;

  /// Takes a report of the page's watcher. May call judges.
  void take(JSCValue* report);

  /// Calls `judge` with the click on the link to `address`, at once or when the click is over, but
  /// after kScriptTimeLimit at the latest.
  void judge(const std::string& address, Judge judge);

  /// Forgets all clicks. Calls the judges that wait.
  void endAll();

 private:
  struct Reported;
  using List = std::list<std::shared_ptr<Reported>>;

  static void end(const std::shared_ptr<Reported>& click, JSCValue* report);

  List clicks_;  // those that are not over, the newest first
};

}  // namespace qorix::gtk
