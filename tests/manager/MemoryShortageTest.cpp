// Every allocation of an advertisement's road fails once, and also with those that follow it.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <qorix/MyPushAdEvent.h>
#include <qorix/MyPushAdNotifications.h>

#include "fakes/FakePolicyListener.h"
#include "manager/ManagerTest.h"
#include "platform/Guarded.h"
#include "presentation/StoredShownState.h"
#include "support/Documents.h"
#include "support/FailingMemory.h"

namespace qorix {
namespace {

struct Shortage {
  const char* name;
  bool isBanner;
  bool isCached;  // an earlier run has left the document
  long failures;  // in a row
};

std::ostream& operator<<(std::ostream& out, const Shortage& shortage) {
  return out << shortage.name;
}

/// Needs no memory, as it is to tell of the lack of it.
class CountingLog : public Log {
 public:
  void write(std::string_view /*message*/) override { ++lines; }
  int lines = 0;
};

/// Guards its tasks as the real loop does.
class GuardingRunLoop : public FakeRunLoop {
 public:
  void performAfterDelay(double seconds, std::function<void()> task) override {
    FakeRunLoop::performAfterDelay(seconds, [task = std::move(task)] { callGuarded(task); });
  }
  void dispatchAsync(std::function<void()> task) override {
    FakeRunLoop::dispatchAsync([task = std::move(task)] { callGuarded(task); });
  }
};

/// Calls `work` until there is memory for it: what the headers say may throw.
void untilThereIsMemory(const std::function<void()>& work) {
  for (;;) {
    try {
      work();
      return;
    } catch (const std::bad_alloc&) {
      continue;
    }
  }
}

/// A host with one view for each request, from its start to the end of a banner.
class Road {
 public:
  explicit Road(const Shortage& shortage)
      : document_(makeDocument({.embed = shortage.isBanner ? "1" : "0", .count = "1000"})),
        isBanner_(shortage.isBanner),
        failsOnce_(shortage.failures == 1) {
    if (shortage.isCached) {
      fakes_.userDefaults->setString(document_, kCacheKey);
    }
    services_ = fakes_.services();
    services_.log = log_;
    services_.mainRunLoop = loop_;
    for (auto& view : views_) {
      view = std::make_shared<FakeView>();
      view->setFrame({{0, 0}, {500, 300}});
    }
  }

  void go() {
    install();
    request();
    endDownload(Error{"curl", 7, ""});
    loop_->advance(60);
    endDownload(std::nullopt);
    loop_->advance(1);
    loadPages();
    loop_->advance(1);
    request();
    loop_->advance(1);
    click();
    loop_->advance(1);
  }

  /// With all memory there again: what is left to do is done, and a new request shows.
  std::string problemAfterwards() {
    for (int minute = 0; minute < 3; ++minute) {
      loop_->advance(60);
      endDownload(std::nullopt);
    }
    request();
    endDownload(std::nullopt);
    loop_->advance(1);
    if (session() == nullptr) {
      return "no download was started";
    }
    return isBanner_ ? problemOfBanners() : problemOfPopup();
  }

  int lines() const { return log_->lines; }

 private:
  void install() {
    untilThereIsMemory([this] { installPlatform(services_); });
    untilThereIsMemory([this] {
      willShow_ = fakes_.notificationCenter->addObserver(kPushAdWillShowNotification,
                                                         [this](const Notification&) { ++shown_; });
    });
    untilThereIsMemory([this] { events_ = MyPushAdEvent::observe([](const MyPushAdEvent&) {}); });
    for (int attempt = 0; manager_ == nullptr && attempt < 100; ++attempt) {
      manager_ = MyPushAdManager::sharedPushAdManager();
    }
    manager_->configureWithAppBundle(platform().mainBundle);
  }

  void request() {
    manager_->prepareAndShowAdByUsingMyAppWebServerURLWithHostView(views_.at(requests_++));
  }

  FakeUrlSession* session() const {
    const auto& sessions = fakes_.urlSessions->sessions;
    return sessions.empty() ? nullptr : sessions.back().get();
  }

  /// Ends the running download, as the thread of a session does.
  void endDownload(std::optional<Error> error) {
    if (session() == nullptr) {
      return;
    }
    try {
      session()->deliver(document_);
    } catch (const std::bad_alloc&) {
      error = Error{"curl", 27, ""};
    }
    try {
      session()->complete(error);
    } catch (const std::bad_alloc&) {
      untilThereIsMemory([this] { session()->complete(Error{"curl", 27, ""}); });
    }
    loop_->runUntilIdle();
  }

  // What the toolkit calls.

  void loadPages() {
    callGuarded([this] {
      fakes_.interfaceLoader->page = [](const std::string&) { return std::string("support"); };
      for (std::size_t i = 0; i < fakes_.interfaceLoader->webViews.size(); ++i) {
        const auto webView = fakes_.interfaceLoader->webViews[i].lock();
        const auto delegate = fakes_.interfaceLoader->delegates.at(i).lock();
        if (webView != nullptr && delegate != nullptr) {
          delegate->webViewDidFinishLoadForFrame(webView, WebFrame());
        }
      }
    });
  }

  void click() {
    callGuarded([this] {
      FakePolicyListener listener;
      const auto node = std::make_shared<DomHtmlElement>("cocoa_close_web", std::nullopt);
      const Dictionary element{{kWebElementDomNodeKey, node}};
      const Dictionary information{
          {kWebActionNavigationTypeKey, static_cast<int>(WebNavigationType::linkClicked)},
          {kWebActionElementKey, element}};
      const auto& loader = *fakes_.interfaceLoader;
      clicked_ = loader.webViews.at(0).lock();
      if (const auto delegate = loader.delegates.at(0).lock()) {
        delegate->webViewDecidePolicyForNavigationAction(
            clicked_, information, *Url::parse("https://www.example.com/"), WebFrame(), listener);
      }
    });
  }

  // What has come of it.

  std::size_t countLoadedPages() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(fakes_.interfaceLoader->webViews, [](const auto& each) {
          const auto webView = each.lock();
          return webView != nullptr && !webView->loads.empty();
        }));
  }

  static bool hasPage(const View& adView) {
    const auto& children = dynamic_cast<const FakeViewNode&>(adView).children;
    const auto webView =
        children.empty() ? nullptr : std::dynamic_pointer_cast<FakeWebView>(children.front());
    return webView != nullptr && !webView->loads.empty();
  }

  std::string problemOfBanners() const {
    const auto& banners = views_.at(requests_ - 1)->children;
    if (banners.size() != 1 || !hasPage(*banners.front())) {
      return "the last request shows nothing";
    }
    if (shown_ < countLoadedPages() || (failsOnce_ && shown_ > countLoadedPages())) {
      return std::to_string(shown_) + " announced, " + std::to_string(countLoadedPages()) +
             " shown";
    }
    const auto counted = fakes_.userDefaults->integerForKey(kShownCountKey);
    if (counted < static_cast<std::int64_t>(shown_) ||
        counted > static_cast<std::int64_t>(requests_)) {
      return std::to_string(counted) + " counted of " + std::to_string(requests_);
    }
    return "";
  }

  std::string problemOfPopup() const {
    if (fakes_.windows->windows.empty() || shown_ == 0) {
      return "no window was announced";
    }
    const auto& window = *fakes_.windows->windows.back();
    if (!window.visible) {
      return "the window is not visible";
    }
    return hasPage(*window.contentView()) ? "" : "the window has no page";
  }

  const std::string document_;
  const bool isBanner_;
  const bool failsOnce_;
  FakePlatform fakes_;
  std::shared_ptr<CountingLog> log_ = std::make_shared<CountingLog>();
  std::shared_ptr<GuardingRunLoop> loop_ = std::make_shared<GuardingRunLoop>();
  Platform services_;
  std::vector<std::shared_ptr<FakeView>> views_ = std::vector<std::shared_ptr<FakeView>>(3);
  std::shared_ptr<MyPushAdManager> manager_;
  NotificationObservation willShow_;
  std::vector<NotificationObservation> events_;
  std::shared_ptr<FakeWebView> clicked_;  // kept, to be counted after its end
  std::size_t requests_ = 0;
  std::size_t shown_ = 0;
};

enum Outcome { kAsItShouldBe, kRoadEndedBefore, kProblem };

/// Run in a process of its own: the library is then new.
Outcome walk(const Shortage& shortage, long allocation) {
  Road road(shortage);
  test::failAllocations(allocation, shortage.failures);
  try {
    road.go();
  } catch (...) {
    test::stopFailingAllocations();
    std::fprintf(stderr, "allocation %ld: an exception has reached the host\n", allocation);
    return kProblem;
  }
  const int lines = road.lines();
  const bool hasFailed = test::stopFailingAllocations();
  std::string problem = road.problemAfterwards();
  if (problem.empty() && hasFailed && shortage.failures == 1 && lines == 0) {
    problem = "nothing was logged";
  }
  if (!problem.empty()) {
    std::fprintf(stderr, "allocation %ld: %s\n", allocation, problem.c_str());
    return kProblem;
  }
  return hasFailed ? kAsItShouldBe : kRoadEndedBefore;
}

Outcome walkInOwnProcess(const Shortage& shortage, long allocation) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(walk(shortage, allocation));
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
    std::fprintf(stderr, "allocation %ld: the process has crashed\n", allocation);
    return kProblem;
  }
  return static_cast<Outcome>(WEXITSTATUS(status));
}

class MemoryShortageTest : public ::testing::TestWithParam<Shortage> {};

TEST_P(MemoryShortageTest, leavesTheHostRunningAndTheNextRequestShows) {
  long failed = 0;
  Outcome outcome = kAsItShouldBe;
  for (long allocation = 0; outcome != kRoadEndedBefore; ++allocation) {
    outcome = walkInOwnProcess(GetParam(), allocation);
    ASSERT_NE(outcome, kProblem) << allocation;
    failed += outcome == kAsItShouldBe ? 1 : 0;
  }
  EXPECT_GT(failed, 200);
}

INSTANTIATE_TEST_SUITE_P(Roads, MemoryShortageTest,
                         ::testing::Values(Shortage{"banner", true, false, 1},
                                           Shortage{"popup", false, false, 1},
                                           Shortage{"cachedBanner", true, true, 1},
                                           Shortage{"cachedPopup", false, true, 1},
                                           Shortage{"bannerForAWhile", true, false, 40},
                                           Shortage{"popupForAWhile", false, false, 40}),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace qorix
