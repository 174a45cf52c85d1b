#include <gmock/gmock.h>

#include <chrono>
#include <utility>

#include "fakes/FakePlatform.h"
#include "platform/gtk/LoadReports.h"

namespace qorix::test {

namespace {

using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr WebFrame kMain{.isMainFrame = true};
constexpr WebFrame kInner{.isMainFrame = false};

class LoadReportsTest : public testing::Test {
 protected:
  LoadReportsTest() { installPlatform(fakes.services()); }

  void answer(bool isThere) {
    std::exchange(question, nullptr)(isThere);
    fakes.runLoop->advance(1);
  }

  FakePlatform fakes;
  std::function<void(bool)> question;  // put to the page and not answered yet
  std::vector<bool> delivered;         // whether each was the main frame
  std::function<void()> onDelivery = [] {};
  std::shared_ptr<gtk::LoadReports> reports = std::make_shared<gtk::LoadReports>(
      fakes.runLoop,
      [this](std::function<void(bool)> act) {
        EXPECT_EQ(question, nullptr);
        question = std::move(act);
      },
      [this](const WebFrame& frame) {
        delivered.push_back(frame.isMainFrame);
        onDelivery();
      });
};

}  // namespace

TEST_F(LoadReportsTest, eachWaitsForThePageAndForTheOneBefore) {
  reports->add(kInner);
  reports->add(kMain);
  fakes.runLoop->advance(10);
  EXPECT_THAT(delivered, IsEmpty());
  answer(true);
  EXPECT_THAT(delivered, ElementsAre(false));
  answer(true);
  EXPECT_THAT(delivered, ElementsAre(false, true));
  reports->add(kMain);
  answer(true);
  EXPECT_THAT(delivered, SizeIs(3));
}

TEST_F(LoadReportsTest, oneThatComesDuringAnotherComesAfterIt) {
  onDelivery = [this] {
    if (delivered.size() == 1) {
      reports->add(kMain);
      fakes.runLoop->advance(1);
      EXPECT_THAT(delivered, SizeIs(1));
    }
  };
  reports->add(kInner);
  answer(true);
  fakes.runLoop->advance(1);
  answer(true);
  EXPECT_THAT(delivered, ElementsAre(false, true));
}

TEST_F(LoadReportsTest, thoseOfAPageThatIsGoneAreDropped) {
  reports->add(kInner);
  reports->add(kMain);
  answer(false);
  EXPECT_THAT(delivered, IsEmpty());
  reports->add(kMain);
  answer(true);
  EXPECT_THAT(delivered, ElementsAre(true)) << "of the next page";
}

TEST_F(LoadReportsTest, ofTooManyInnerFramesSomeAreLeftOutWithOneLine) {
  for (int i = 0; i < 200; ++i) {
    reports->add(kInner);
  }
  reports->add(kMain);
  while (question != nullptr) {
    answer(true);
  }
  EXPECT_THAT(delivered, SizeIs(101));
  EXPECT_TRUE(delivered.back()) << "the main frame's is never left out";
  EXPECT_THAT(fakes.log->lines(),
              ElementsAre("ZAM Ad page loads inner frames too fast: more than 100 wait, others are "
                          "left out"));
}

TEST_F(LoadReportsTest, theWorkIsFollowedByAPauseOfItsLength) {
  onDelivery = [] {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(30);
    while (std::chrono::steady_clock::now() < end) {
    }
  };
  reports->add(kInner);
  std::exchange(question, nullptr)(true);
  fakes.runLoop->runUntilIdle();
  ASSERT_THAT(delivered, SizeIs(1));
  EXPECT_THAT(fakes.runLoop->pendingDelays(), ElementsAre(Ge(0.03)));
  reports->add(kInner);
  EXPECT_EQ(question, nullptr) << "also when none waited";
  fakes.runLoop->advance(10);
  EXPECT_NE(question, nullptr);
}

}  // namespace qorix::test
