// What a host that runs for long asks of the library: it neither grows nor forgets to try again.

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qorix/MyPushAdNotifications.h>

#include "manager/ManagerTest.h"
#include "support/Documents.h"
#include "support/FailingMemory.h"

namespace qorix {
namespace {

class CountingSession : public UrlSession {
 public:
  CountingSession(std::weak_ptr<UrlSessionDelegate> delegate, long& attempts)
      : delegate_(std::move(delegate)), attempts_(attempts) {}

  /// Each task fails at once.
  void startDataTask(const Url& /*url*/) override {
    ++attempts_;
    if (const auto delegate = delegate_.lock()) {
      delegate->urlSessionDidCompleteWithError(Error{"curl", 7, ""});
    }
  }

 private:
  const std::weak_ptr<UrlSessionDelegate> delegate_;
  long& attempts_;
};

class CountingSessions : public UrlSessionFactory {
 public:
  std::shared_ptr<UrlSession> createEphemeralSession(
      std::weak_ptr<UrlSessionDelegate> delegate) override {
    return std::make_shared<CountingSession>(std::move(delegate), attempts);
  }
  long attempts = 0;
};

class SilentLog : public Log {
 public:
  void write(std::string_view /*message*/) override {}
};

class LongRunTest : public ManagerTest {
 protected:
  /// Replaces what would itself grow.
  void installWith(const std::shared_ptr<UrlSessionFactory>& sessions) {
    Platform services = fakes_.services();
    services.log = std::make_shared<SilentLog>();
    services.urlSessions = sessions;
    installPlatform(std::move(services));
  }
};

TEST_F(LongRunTest, aDayOfFailuresIsOneAttemptAMinuteAndNoGrowth) {
  const auto sessions = std::make_shared<CountingSessions>();
  installWith(sessions);
  show(hostView_);
  fakes_.runLoop->runUntilIdle();
  const auto liveAfterMinutes = [&](int minutes) {
    for (int minute = 0; minute < minutes; ++minute) {
      const long before = sessions->attempts;
      fakes_.runLoop->advance(60);
      EXPECT_EQ(sessions->attempts, before + 1);
    }
    return test::liveAllocations();
  };
  const long afterHalfADay = liveAfterMinutes(720);
  EXPECT_EQ(liveAfterMinutes(720), afterHalfADay);
  EXPECT_EQ(sessions->attempts, 1 + 1440);
}

TEST_F(LongRunTest, aThousandPresentersCostTheSameEach) {
  constexpr std::size_t kHalf = 500;
  installWith(fakes_.urlSessions);
  const std::string document = makeDocument({.count = "100000"});
  show(hostView_);
  land(document);
  fakes_.runLoop->advance(1);
  std::vector<std::shared_ptr<FakeView>> views(2 * kHalf);
  const auto costOfHalf = [&](std::size_t first) {
    const long before = test::liveAllocations();
    for (std::size_t i = first; i < first + kHalf; ++i) {
      views[i] = std::make_shared<FakeView>();
      views[i]->setFrame({{0, 0}, {500, 300}});
      show(views[i]);
      fakes_.runLoop->advance(1);
    }
    return test::liveAllocations() - before;
  };
  const long first = costOfHalf(0);
  const long second = costOfHalf(kHalf);
  constexpr long kOfContainers = 30;  // they grow by leaps
  EXPECT_NEAR(static_cast<double>(second), static_cast<double>(first), kOfContainers);
  EXPECT_TRUE(
      std::ranges::all_of(views, [](const auto& view) { return view->children.size() == 1; }));
}

TEST_F(LongRunTest, ofAThousandPresentersOnlyTheOneOfTheViewFollowsIt) {
  show(hostView_);
  land(makeDocument({.count = "100000"}));
  std::vector<std::shared_ptr<FakeView>> views(1000);
  for (auto& view : views) {
    view = std::make_shared<FakeView>();
    show(view);
  }
  fakes_.runLoop->advance(1);
  const auto placements = [&views] {
    long count = 0;
    for (const auto& view : views) {
      count += dynamic_cast<FakeBoxView&>(*view->children.at(0)).setFrameCalls;
    }
    return count;
  };
  const long before = placements();
  views[500]->setFrame({{0, 0}, {600, 400}});
  EXPECT_EQ(placements(), before + 1);
}

}  // namespace
}  // namespace qorix
