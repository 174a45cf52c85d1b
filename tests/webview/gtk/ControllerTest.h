#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/MyPushAdViewController.h>

#include "fakes/FakeControllerDelegate.h"
#include "fakes/FakeWorkspace.h"
#include "support/LoopbackServer.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {

/// A page in the real engine, shown by the real controller, with a user at the pointer and the
/// keys.
class ControllerTest : public GtkTest {
 protected:
  ControllerTest();

  /// Shows the page as a banner and waits until it has loaded and was handled.
  void show(const std::string& html);

  /// Waits until the page on show has that title.
  bool waitForTitle(const std::string& title);
  std::string evaluate(const std::string& script);

  /// Clicks in the middle of the element with that id, as a user, or at a point inside of it.
  void click(const std::string& id);
  void click(const std::string& id, int x, int y, int button = 1);

  /// The engine's processes of pages, which are descendants of this one.
  static std::vector<pid_t> webProcesses();
  static void signalWebProcesses(int signal);

  /// Waits until the user's acts have caused that many reports, openings and requests in total.
  bool waitForActs(std::size_t count);
  std::size_t acts() const;

  /// Runs the loop until the results of a click have arrived.
  void settle();

  /// Counts the pages that have loaded and were handled.
  struct WatchedController : MyPushAdViewController {
    void webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& webView,
                                      const WebFrame& frame) override {
      MyPushAdViewController::webViewDidFinishLoadForFrame(webView, frame);
      pages += frame.isMainFrame ? 1 : 0;
    }
    int pages = 0;
  };

  static std::shared_ptr<WatchedController> newController() {
    return MyPushAdViewController::createInstanceWithPushAdMode<WatchedController>(
        MyPushAdModeBanner);
  }

  LoopbackServer server;
  HostWindow host{400, 300};
  std::shared_ptr<FakeControllerDelegate> delegate = std::make_shared<FakeControllerDelegate>();
  std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
  std::shared_ptr<WatchedController> controller = newController();
  std::vector<std::string> announced;  // the elements, described
};

}  // namespace qorix::test
