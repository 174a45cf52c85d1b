// What is reported when a banner or the pop-up window is closed, and by whom.

#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <vector>

#include "presentation/OperatorTest.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OperatorClosingTest : public OperatorTest {};

TEST_F(OperatorClosingTest, anOperatorWithoutControllerReportsTheClosingWithoutObject) {
  const auto shown = makeOperator();
  shown->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
  const auto undecided = makeOperator();
  fakes_.runLoop->runUntilIdle();
  notifications_.clear();
  fakes_.log->takeLines();
  popupWindow().close();
  fakes_.runLoop->runUntilIdle();
  ASSERT_EQ(notifications_.size(), 2U);
  EXPECT_EQ(notifications_[0]->object(), shown->pushAdViewController()->view());
  EXPECT_EQ(notifications_[1]->name(), kPushAdDidCloseNotification);
  EXPECT_EQ(notifications_[1]->object(), nullptr);
  EXPECT_EQ(notifications_[1]->userInfo(), std::nullopt) << "it has no record either";
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(operatorCheck("postPushAdDidCloseNotification", 530,
                                                             kVerifyFailedMessage)));
}

TEST_F(OperatorClosingTest, anOperatorWhoseCountIsUsedUpReportsTheClosingOfTheWindowThatItKnows) {
  const auto shown = makeOperator();
  shown->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
  fakes_.runLoop->runUntilIdle();
  store("1a4", 3);
  const auto usedUp = makeOperator();
  const auto record = makeRecord({.embed = 0, .count = 3});
  usedUp->processShowAdIfNeededWithPushAdInfo(record);
  EXPECT_EQ(usedUp->pushAdViewController(), nullptr);
  notifications_.clear();
  fakes_.log->takeLines();
  popupWindow().close();
  fakes_.runLoop->runUntilIdle();
  ASSERT_EQ(notifications_.size(), 2U);
  EXPECT_EQ(notifications_[1]->object(), nullptr);
  EXPECT_EQ(notifications_[1]->userInfo()->at(kPushAdInfoKey).object<const MyPushAdInfo>(), record);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(operatorCheck("postPushAdDidCloseNotification", 530,
                                                             kVerifyFailedMessage)));
}

TEST_F(OperatorClosingTest, anOperatorMadeBeforeTheWindowKnowsNothingOfItUnlessItNeedsOne) {
  const auto early = makeOperator();
  const auto shown = makeOperator();
  shown->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(early->popupAdWindow(), nullptr);
  events_.clear();
  popupWindow().close();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdDidCloseNotification));
}

TEST_F(OperatorClosingTest, everyClosingOfTheWindowIsReportedByAllWhoKnowIt) {
  const auto first = makeOperator();
  first->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
  fakes_.runLoop->runUntilIdle();
  popupWindow().close();
  const auto second = makeOperator();
  second->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
  fakes_.runLoop->runUntilIdle();
  notifications_.clear();
  popupWindow().close();
  fakes_.runLoop->runUntilIdle();
  ASSERT_EQ(notifications_.size(), 2U) << "for the first one it is the second closing";
  EXPECT_EQ(notifications_[0]->object(), first->pushAdViewController()->view());
  EXPECT_EQ(notifications_[1]->object(), second->pushAdViewController()->view());
}

TEST_F(OperatorClosingTest, thePageOfALaterPopupIsEndedOnce) {
  const std::array presenters{makeOperator(), makeOperator(), makeOperator()};
  std::vector<std::shared_ptr<FakeWebView>> pages;
  for (const auto& presenter : presenters) {
    presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
    pages.push_back(fakes_.interfaceLoader->webViews.back().lock());
    fakes_.runLoop->runUntilIdle();
    popupWindow().close();
  }
  EXPECT_EQ(pages[0]->endedPages, 0) << "the window keeps it";
  EXPECT_EQ(pages[1]->endedPages, 1);
  EXPECT_EQ(pages[2]->endedPages, 1);
}

TEST_F(OperatorClosingTest, aNotificationWithoutSenderIsNobodys) {
  const auto withoutWindow = MyPushAdOperator::createInstanceWithHostView(nullptr);
  ASSERT_EQ(withoutWindow->popupAdWindow(), nullptr);
  fakes_.notificationCenter->post(Notification(kWindowWillCloseNotification, nullptr));
  fakes_.notificationCenter->post(Notification(kViewFrameDidChangeNotification, nullptr));
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(OperatorClosingTest, theClosingOfAHostsWindowIsNoClosingOfTheBannerInIt) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  const auto window = fakes_.windows->createWindowWithContentView(hostView_);
  window->makeKeyAndOrderFront();
  window->close();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification));
}

TEST_F(OperatorClosingTest, aBannerThatIsElsewhereIsLoggedThenRemovedThenReported) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  const auto ad = presenter->pushAdViewController()->view();
  const auto elsewhere = std::make_shared<FakeView>();
  elsewhere->addSubview(ad);
  events_.clear();
  runLoop_->onDispatch = [&] {
    EXPECT_EQ(fakes_.log->lines().size(), 1U);
    EXPECT_EQ(ad->superview(), nullptr);
  };
  presenter->pushAdViewController()->handleCloseButtonClicked();
  EXPECT_EQ(runLoop_->dispatches, 2) << "the showing's and this one";
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdDidCloseNotification));
  EXPECT_EQ(notifications_.back()->object(), ad);
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(operatorCheck("pushAdViewControllerCloseButtonDidClick:", 494,
                                        kVerifyFailedMessage)));
}

TEST_F(OperatorClosingTest, aSecondCloseClickIsLoggedAndReportedAgain) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  events_.clear();
  presenter->pushAdViewController()->handleCloseButtonClicked();
  presenter->pushAdViewController()->handleCloseButtonClicked();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdDidCloseNotification, kPushAdDidCloseNotification));
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(operatorCheck("pushAdViewControllerCloseButtonDidClick:", 494,
                                        kVerifyFailedMessage)));
}

TEST_F(OperatorClosingTest, aCloseClickOfAForeignControllerInThePopupIsLoggedOnly) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  presenter->pushAdViewControllerCloseButtonDidClick(nullptr);
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(operatorCheck("pushAdViewControllerCloseButtonDidClick:", 489,
                                        kVerifyFailedMessage)));
  EXPECT_EQ(runLoop_->dispatches, 0);
}

}  // namespace
}  // namespace qorix
