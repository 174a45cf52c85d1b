// How presenters come to be, and the window that they get.

#include <gmock/gmock.h>

#include <type_traits>

#include "presentation/OperatorTest.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A presenter that can make no controller.
struct OperatorWithoutController : MyPushAdOperator {
  using MyPushAdOperator::MyPushAdOperator;
  std::shared_ptr<MyPushAdViewController> createPushAdViewController(
      std::int64_t /*mode*/) override {
    return nullptr;
  }
};

class OperatorMakingTest : public OperatorTest {};

TEST_F(OperatorMakingTest, noneIsMadeWithoutTheFactory) {
  struct Implicit : MyPushAdOperator {};
  EXPECT_FALSE(std::is_default_constructible_v<MyPushAdOperator>);
  EXPECT_FALSE(std::is_copy_constructible_v<MyPushAdOperator>);
  EXPECT_FALSE(std::is_default_constructible_v<Implicit>);
  EXPECT_FALSE(std::is_default_constructible_v<OperatorWithoutController>);
  EXPECT_FALSE(std::is_default_constructible_v<FactoryKey<MyPushAdOperator>>);
}

TEST_F(OperatorMakingTest, aConstructorThatPreparesBeforeItIsSharedHarmsNobody) {
  struct Eager : MyPushAdOperator {
    explicit Eager(const FactoryKey<MyPushAdOperator>& key) : MyPushAdOperator(key) {
      setMyPushAdInfo(makeRecord());
      prepareToShowAd();
    }
  };
  const auto presenter = MyPushAdOperator::createInstanceWithHostView<Eager>(hostView_);
  EXPECT_NE(presenter->pushAdViewController(), nullptr);
  EXPECT_EQ(presenter->pushAdViewController()->delegate(), nullptr);
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), IsEmpty()) << "nobody could be shown later";
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(OperatorMakingTest, aMissingControllerCountsAsAPopups) {
  const auto early = MyPushAdOperator::createInstanceWithHostView<OperatorWithoutController>(
      std::shared_ptr<View>(hostView_));
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0, .delay = -1}));
  EXPECT_EQ(early->popupAdWindow(), nullptr);
  fakes_.log->takeLines();
  early->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0, .width = 400, .height = 300}));
  EXPECT_EQ(early->popupAdWindow(), fakes_.windows->windows[0]);
  fakes_.runLoop->runUntilIdle();
  EXPECT_TRUE(popupWindow().visible);
  EXPECT_EQ(popupWindow().contentRectForFrameRect(popupWindow().frame()).size, (Size{400, 300}));
  ASSERT_EQ(notifications_.size(), 1U);
  EXPECT_EQ(notifications_[0]->object(), nullptr);
  EXPECT_THAT(
      fakes_.log->lines(),
      ElementsAre(operatorCheck("prepareToShowAd", 401, kVerifyFailedMessage),
                  operatorCheck("postPushAdWillShowNotification", 518, kVerifyFailedMessage)));
}

TEST_F(OperatorMakingTest, aWindowThatItHasIsKept) {
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0, .delay = -1}));
  const auto own = fakes_.windows->createWindowWithContentView(std::make_shared<FakeView>());
  const auto presenter = makeOperator();
  presenter->setPopupAdWindow(own);
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  EXPECT_EQ(presenter->popupAdWindow(), own);
  fakes_.runLoop->runUntilIdle();
  EXPECT_TRUE(own->isVisible());
  EXPECT_FALSE(popupWindow().visible);
}

TEST_F(OperatorMakingTest, withoutWindowsAPopupIsAnnouncedAndItsPageLoaded) {
  fakes_.windows->isBroken = true;
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(presenter->popupAdWindow(), nullptr);
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification));
  EXPECT_EQ(webView()->loads.size(), 1U);
  fakes_.windows->isBroken = false;
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0, .delay = -1}));
  EXPECT_EQ(fakes_.windows->windows.size(), 1U) << "the next one tries again";
}

TEST_F(OperatorMakingTest, aHostThatIsGoneBeforeTheDecisionMakesAPopupsController) {
  const auto presenter = makeOperator();
  hostView_.reset();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 1}));
  EXPECT_EQ(presenter->pushAdViewController()->pushAdMode(), MyPushAdModePopup);
}

TEST_F(OperatorMakingTest, aHostThatChangesBeforeTheDecisionMovesNothing) {
  const auto presenter = makeOperator();
  hostView_->setFrame({{0, 0}, {800, 600}});
  EXPECT_EQ(presenter->pushAdViewController(), nullptr);
  EXPECT_THAT(fakes_.interfaceLoader->requests, IsEmpty());
}

}  // namespace
}  // namespace qorix
