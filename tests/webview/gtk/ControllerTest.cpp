#include "webview/gtk/ControllerTest.h"

#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace qorix::test {

ControllerTest::ControllerTest() {
  Platform services = platform();
  services.workspace = workspace;
  installPlatform(services);
  controller->setDelegate(delegate);
  platform()
      .notificationCenter
      ->addObserver(
          kPushAdIsTriggeringNavigationNotification,
          [this](const Notification& each) {
            announced.push_back(
                MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&each).value_or("?"));
          })
      .keep();
}

void ControllerTest::show(const std::string& html) {
  host.show();
  host.view()->addSubview(controller->view());
  controller->view()->setFrame({{0, 0}, {400, 300}});
  const int before = controller->pages;
  controller->loadDataWithTitle(
      std::nullopt, "<!DOCTYPE html><title>loading</title><body style='margin:0'>" + html +
                        "<script>addEventListener('load', () => setTimeout(() =>"
                        " { document.title = 'loaded'; }, 0));</script>");
  // The page before this one may have the same title.
  ASSERT_TRUE(waitFor([&] { return controller->pages > before; }));
  ASSERT_TRUE(waitForTitle("loaded"));
  settle();
}

bool ControllerTest::waitForTitle(const std::string& title) {
  return waitFor([&] { return evaluate("document.title") == title; });
}

std::string ControllerTest::evaluate(const std::string& script) {
  const auto webView = controller->legacyWebView();
  return webView == nullptr ? "" : webView->stringByEvaluatingJavaScriptFromString(script);
}

void ControllerTest::click(const std::string& id) {
  std::istringstream middle(
      evaluate("var box = document.getElementById('" + id +
               "').getBoundingClientRect(); Math.round(box.width / 2) + ' ' + "
               "Math.round(box.height / 2)"));
  int x = 0;
  int y = 0;
  middle >> x >> y;
  click(id, x, y);
}

void ControllerTest::click(const std::string& id, int x, int y, int button) {
  std::istringstream corner(evaluate("var box = document.getElementById('" + id +
                                     "').getBoundingClientRect(); Math.round(box.left) + ' ' + "
                                     "Math.round(box.top)"));
  int left = 0;
  int top = 0;
  corner >> left >> top;
  const GdkRectangle place = host.overlayOnScreen();
  clickOn(place.x + left + x, place.y + top + y, button);
}

std::vector<pid_t> ControllerTest::webProcesses() {
  std::map<pid_t, pid_t> parents;
  std::vector<pid_t> candidates;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    std::ifstream file(entry.path() / "stat");
    pid_t process = 0;
    pid_t parent = 0;
    std::string name;
    std::string state;
    if (file >> process >> name >> state >> parent) {
      parents[process] = parent;
      if (name.starts_with("(WebKitWebProces")) {
        candidates.push_back(process);
      }
    }
  }
  // In a sandbox there are others in between.
  std::erase_if(candidates, [&](pid_t process) {
    while (process > 1 && process != getpid()) {
      process = parents[process];
    }
    return process != getpid();
  });
  return candidates;
}

void ControllerTest::signalWebProcesses(int signal) {
  for (const pid_t process : webProcesses()) {
    kill(process, signal);
  }
}

std::size_t ControllerTest::acts() const {
  return delegate->reports.size() + workspace->opened.size() + server.requests().size();
}

bool ControllerTest::waitForActs(std::size_t count) {
  const bool happened = waitFor([&] { return acts() >= count; });
  settle();
  return happened;
}

void ControllerTest::settle() {
  bool isSettled = false;
  platform().mainRunLoop->performAfterDelay(0.1, [&isSettled] { isSettled = true; });
  waitFor([&isSettled] { return isSettled; });
}

}  // namespace qorix::test
