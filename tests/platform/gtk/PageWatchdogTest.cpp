#include <gmock/gmock.h>

#include <memory>
#include <utility>
#include <vector>

#include "fakes/FakeRunLoop.h"
#include "platform/gtk/PageWatchdog.h"

namespace qorix::test {

namespace {

using gtk::PageWatchdog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class PageWatchdogTest : public testing::Test {
 protected:
  void advance(int seconds) {
    for (int i = 0; i < seconds; ++i) {
      ++now;
      runLoop->advance(1);
    }
  }

  /// The page answers what it has been asked.
  void answer() {
    std::exchange(onAnswer, [] {})();
  }

  void stopAnswering() { answers = false; }

  int now = 0;
  bool answers = true;
  std::vector<int> asked;   // when
  std::vector<int> silent;  // when it was noticed
  std::function<void()> onAnswer;
  std::shared_ptr<FakeRunLoop> runLoop = std::make_shared<FakeRunLoop>();
  std::shared_ptr<PageWatchdog> watchdog = std::make_shared<PageWatchdog>(
      runLoop,
      [this](std::function<void()> answered) {
        asked.push_back(now);
        onAnswer = std::move(answered);
        if (answers) {
          answer();
        }
      },
      [this] { silent.push_back(now); });
};

}  // namespace

TEST_F(PageWatchdogTest, aPageThatNobodyNeedsIsAskedEverLessOften) {
  watchdog->start();
  advance(255);
  EXPECT_THAT(asked, ElementsAre(0, 5, 15, 35, 75, 135, 195, 255));
  EXPECT_THAT(silent, IsEmpty());
}

TEST_F(PageWatchdogTest, aPageIsSilentAfterTenSecondsAndTheWatchEnds) {
  watchdog->start();
  stopAnswering();
  advance(14);
  EXPECT_THAT(silent, IsEmpty());
  advance(100);
  EXPECT_THAT(silent, ElementsAre(15));
  EXPECT_THAT(asked, ElementsAre(0, 5));
  watchdog->start();
  EXPECT_THAT(asked, ElementsAre(0, 5, 114)) << "the next page is watched";
}

TEST_F(PageWatchdogTest, aPageMayTakeAlmostTenSeconds) {
  stopAnswering();
  watchdog->start();
  advance(9);
  answer();
  advance(4);
  EXPECT_THAT(asked, ElementsAre(0));
  advance(1);
  EXPECT_THAT(asked, ElementsAre(0, 14));
  advance(9);
  EXPECT_THAT(silent, IsEmpty());
}

TEST_F(PageWatchdogTest, aPageThatIsUsedIsAskedSoon) {
  watchdog->start();
  advance(80);  // it has been asked at 75 and would be again at 135
  watchdog->pageIsUsed();
  advance(2);
  watchdog->pageIsUsed();
  asked.clear();
  advance(50);
  EXPECT_THAT(asked, ElementsAre(85, 95, 115)) << "and then less often again";
}

TEST_F(PageWatchdogTest, useDoesNotShortenTheTimeForAnAnswer) {
  watchdog->start();
  advance(74);
  stopAnswering();
  advance(1);
  ASSERT_THAT(asked, SizeIs(5));
  advance(3);
  watchdog->pageIsUsed();
  advance(6);
  EXPECT_THAT(silent, IsEmpty());
  answer();
  answers = true;
  advance(5);
  EXPECT_THAT(asked.back(), 89);
  EXPECT_THAT(asked, SizeIs(6));
}

TEST_F(PageWatchdogTest, theNextPageIsAskedAtOnce) {
  watchdog->start();
  advance(80);
  asked.clear();
  watchdog->start();
  advance(10);
  EXPECT_THAT(asked, ElementsAre(80, 85));
}

TEST_F(PageWatchdogTest, anotherPageDoesNotGiveASilentOneMoreTime) {
  stopAnswering();
  watchdog->start();
  advance(6);
  watchdog->start();
  advance(4);
  EXPECT_THAT(silent, ElementsAre(10));
}

TEST_F(PageWatchdogTest, aPageThatIsGoneIsNotAskedAndNotSilent) {
  watchdog->start();
  advance(5);
  watchdog->stop();
  advance(100);
  EXPECT_THAT(asked, ElementsAre(0, 5));
  stopAnswering();
  watchdog->start();
  watchdog->stop();
  watchdog->pageIsUsed();
  advance(100);
  EXPECT_THAT(silent, IsEmpty());
  answer();
  advance(100);
  EXPECT_THAT(asked, SizeIs(3)) << "an answer that comes too late changes nothing";
}

TEST_F(PageWatchdogTest, timeThatTheLoopDoesNotRunDoesNotCount) {
  stopAnswering();
  watchdog->start();
  runLoop->advance(runLoop->pendingDelays().front());
  EXPECT_THAT(silent, IsEmpty()) << "one look, however late it may be, is not enough";
  answer();
  advance(4);
  EXPECT_THAT(silent, IsEmpty());
}

TEST_F(PageWatchdogTest, theWatchMayBeGivenUpWhileItWaits) {
  stopAnswering();
  watchdog->start();
  watchdog.reset();
  advance(100);
  answer();
  EXPECT_THAT(silent, IsEmpty());
}

}  // namespace qorix::test
