#include <gmock/gmock.h>

#include <qorix/MyPushAdUtil.h>

#include "presentation/OperatorTest.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class MyPushAdOperatorTest : public OperatorTest {};

// Creation.

TEST_F(MyPushAdOperatorTest, turnsOnTheHostViewsFrameNotifications) {
  EXPECT_FALSE(hostView_->postsFrameChanges());
  const auto presenter = makeOperator();
  EXPECT_TRUE(hostView_->postsFrameChanges());
  EXPECT_EQ(presenter->hostView(), hostView_);
  EXPECT_FALSE(presenter->isProcessShowAdRequested());
  EXPECT_EQ(presenter->pushAdViewController(), nullptr);
  EXPECT_EQ(presenter->popupAdWindow(), nullptr);
  EXPECT_EQ(presenter->myPushAdInfo(), nullptr);
}

TEST_F(MyPushAdOperatorTest, isMadeForNoViewToo) {
  const auto presenter = MyPushAdOperator::createInstanceWithHostView(nullptr);
  EXPECT_EQ(presenter->hostView(), nullptr);
}

TEST_F(MyPushAdOperatorTest, allocatesTheReceivingClass) {
  struct Special : MyPushAdOperator {
    using MyPushAdOperator::MyPushAdOperator;
  };
  const std::shared_ptr<Special> presenter =
      MyPushAdOperator::createInstanceWithHostView<Special>(hostView_);
  EXPECT_EQ(presenter->hostView(), hostView_);
}

TEST_F(MyPushAdOperatorTest, holdsItsHostViewWeakly) {
  const auto presenter = makeOperator();
  hostView_.reset();
  EXPECT_EQ(presenter->hostView(), nullptr);
}

TEST_F(MyPushAdOperatorTest, aNewOperatorTakesTheExistingPopupWindow) {
  const auto first = makeOperator();
  first->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  EXPECT_NE(first->popupAdWindow(), nullptr);
  EXPECT_EQ(makeOperator()->popupAdWindow(), first->popupAdWindow());
}

// The decision.

TEST_F(MyPushAdOperatorTest, countZeroIsShownOnceOnAFreshMachineAndNeverAgain) {
  const auto record = makeRecord({.version = "3", .count = 0});
  EXPECT_TRUE(isShownInOneLaunch(record));
  EXPECT_EQ(storedVersion(), "3");
  EXPECT_EQ(storedCount(), 1);
  EXPECT_FALSE(isShownInOneLaunch(record));
  EXPECT_EQ(storedCount(), 1);
}

TEST_F(MyPushAdOperatorTest, theSameVersionIsShownUntilItsCountIsSpent) {
  store("3", 0);
  const auto record = makeRecord({.version = "3", .count = 2});
  EXPECT_TRUE(isShownInOneLaunch(record));
  EXPECT_EQ(storedCount(), 1);
  EXPECT_TRUE(isShownInOneLaunch(record));
  EXPECT_EQ(storedCount(), 2);
  EXPECT_FALSE(isShownInOneLaunch(record));
  EXPECT_EQ(storedCount(), 2);
}

TEST_F(MyPushAdOperatorTest, anOlderVersionStartsCountingAgain) {
  store("3", 7);
  EXPECT_TRUE(isShownInOneLaunch(makeRecord({.version = "2", .count = 1})));
  EXPECT_EQ(storedVersion(), "2");
  EXPECT_EQ(storedCount(), 1);
}

TEST_F(MyPushAdOperatorTest, anEmptyVersionIsAlwaysShownAndLeavesTheSettingsUntouched) {
  store("3", 7);
  const auto record = makeRecord({.version = "", .count = 0});
  EXPECT_TRUE(isShownInOneLaunch(record));
  EXPECT_TRUE(isShownInOneLaunch(record));
  EXPECT_THAT(defaults_->calls, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, twoHostViewsSpendTheSameCount) {
  const auto otherHostView = std::make_shared<FakeView>();
  const auto record = makeRecord({.count = 1});
  const auto first = makeOperator();
  const auto second = MyPushAdOperator::createInstanceWithHostView(otherHostView);
  first->processShowAdIfNeededWithPushAdInfo(record);
  second->processShowAdIfNeededWithPushAdInfo(record);
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(hostView_->children.size(), 1U);
  EXPECT_TRUE(otherHostView->children.empty());
  EXPECT_TRUE(second->isProcessShowAdRequested());
  EXPECT_EQ(storedCount(), 1);
}

TEST_F(MyPushAdOperatorTest, onlyTheFirstRequestIsDecided) {
  const auto presenter = makeOperator();
  const auto held = makeRecord({.adId = 1});
  presenter->processShowAdIfNeededWithPushAdInfo(held);
  fakes_.log->takeLines();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.adId = 2}));
  presenter->processShowAdIfNeededWithPushAdInfo(nullptr);
  EXPECT_EQ(presenter->myPushAdInfo(), held);
  EXPECT_EQ(storedCount(), 1);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdOperatorTest, aNullRecordIsLoggedAndLeavesTheDecisionOpen) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(nullptr);
  EXPECT_THAT(
      fakes_.log->takeLines(),
      ElementsAre(operatorCheck("processShowAdIfNeededWithPushAdInfo:", 287, kFatalMessage)));
  EXPECT_FALSE(presenter->isProcessShowAdRequested());
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  EXPECT_TRUE(presenter->isProcessShowAdRequested());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdOperatorTest, aRecordAlreadyHeldIsLoggedAndReplaced) {
  const auto presenter = makeOperator();
  presenter->setMyPushAdInfo(makeRecord({.adId = 1}));
  const auto fresh = makeRecord({.adId = 2});
  presenter->processShowAdIfNeededWithPushAdInfo(fresh);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(operatorCheck("processShowAdIfNeededWithPushAdInfo:",
                                                             283, kVerifyFailedMessage)));
  EXPECT_EQ(presenter->myPushAdInfo(), fresh);
}

TEST_F(MyPushAdOperatorTest, aHeldRecordReplacedByNullLogsBoth) {
  const auto presenter = makeOperator();
  presenter->setMyPushAdInfo(makeRecord());
  presenter->processShowAdIfNeededWithPushAdInfo(nullptr);
  EXPECT_THAT(
      fakes_.log->lines(),
      ElementsAre(operatorCheck("processShowAdIfNeededWithPushAdInfo:", 283, kVerifyFailedMessage),
                  operatorCheck("processShowAdIfNeededWithPushAdInfo:", 287, kFatalMessage)));
  EXPECT_EQ(presenter->myPushAdInfo(), nullptr);
}

TEST_F(MyPushAdOperatorTest, aDisabledRecordIsLoggedDecidedAndNotCounted) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.enable = false}));
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM Disabled."));
  EXPECT_TRUE(presenter->isProcessShowAdRequested());
  EXPECT_EQ(presenter->pushAdViewController(), nullptr);
  EXPECT_THAT(defaults_->calls, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, aUsedUpRecordIsDecidedSilently) {
  store("1a4", 3);
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  EXPECT_TRUE(presenter->isProcessShowAdRequested());
  EXPECT_EQ(presenter->pushAdViewController(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
  EXPECT_EQ(storedCount(), 3);
}

TEST_F(MyPushAdOperatorTest, theFirstShowingIsMadeDurableWithOneFlush) {
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "3"}));
  EXPECT_THAT(defaults_->calls, ElementsAre("read ZAMMyPushAdVersionKey", "ZAMMyPushAdVersionKey=3",
                                            "ZAMMyPushAdCountKey=1", "synchronize"));
}

TEST_F(MyPushAdOperatorTest, anotherVersionIsMadeDurableWithTwoFlushes) {
  store("3", 7);
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "4"}));
  EXPECT_THAT(defaults_->calls,
              ElementsAre("read ZAMMyPushAdVersionKey", "ZAMMyPushAdVersionKey=4",
                          "ZAMMyPushAdCountKey=0", "synchronize", "read ZAMMyPushAdCountKey",
                          "ZAMMyPushAdCountKey=1", "synchronize"));
}

TEST_F(MyPushAdOperatorTest, theSameVersionIsMadeDurableWithOneFlushOfTheCount) {
  store("1a4", 1);
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord());
  EXPECT_THAT(defaults_->calls,
              ElementsAre("read ZAMMyPushAdVersionKey", "read ZAMMyPushAdCountKey",
                          "ZAMMyPushAdCountKey=2", "synchronize"));
}

// Preparing.

TEST_F(MyPushAdOperatorTest, preparingWithoutARecordIsLogged) {
  const auto presenter = makeOperator();
  presenter->prepareToShowAd();
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(operatorCheck("prepareToShowAd", 372, kFatalMessage)));
  EXPECT_EQ(presenter->pushAdViewController(), nullptr);
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), IsEmpty());
}

TEST_F(MyPushAdOperatorTest, preparingChecksTheRecord) {
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.adId = 0}));
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre("-[MyPushAdInfo doCheck] 97: ZAM <=> ZAM Verify failed!"));
}

TEST_F(MyPushAdOperatorTest, preparingAgainKeepsTheControllerAndLogs) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  const auto controller = presenter->pushAdViewController();
  presenter->prepareToShowAd();
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(operatorCheck("prepareToShowAd", 376, kVerifyFailedMessage)));
  EXPECT_EQ(presenter->pushAdViewController(), controller);
}

TEST_F(MyPushAdOperatorTest, withoutAControllerItLogsAndGoesOn) {
  struct WithoutController : MyPushAdOperator {
    using MyPushAdOperator::MyPushAdOperator;
    std::shared_ptr<MyPushAdViewController> createPushAdViewController(
        std::int64_t /*mode*/) override {
      return nullptr;
    }
  };
  const auto presenter = MyPushAdOperator::createInstanceWithHostView<WithoutController>(hostView_);
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.delay = 5}));
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(operatorCheck("prepareToShowAd", 401, kVerifyFailedMessage)));
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), ElementsAre(5));
  fakes_.runLoop->advance(5);
  EXPECT_THAT(events_, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, embedAboveZeroWithAHostViewIsABanner) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 3}));
  EXPECT_EQ(presenter->pushAdViewController()->pushAdMode(), MyPushAdModeBanner);
  EXPECT_EQ(presenter->pushAdViewController()->delegate(), presenter);
  EXPECT_TRUE(presenter->isAdShownAsBanner());
  EXPECT_THAT(fakes_.windows->windows, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, theControllerIsSizedOnlyWhenWidthAndHeightAreAboveZero) {
  struct Case {
    std::int64_t width;
    std::int64_t height;
    Size expected;
  };
  for (const auto& [width, height, expected] : {Case{300, 50, {300, 50}}, Case{0, 50, {0, 0}},
                                                Case{300, 0, {0, 0}}, Case{-1, 50, {0, 0}}}) {
    const auto presenter = makeOperator();
    presenter->processShowAdIfNeededWithPushAdInfo(
        makeRecord({.version = "", .embed = 3, .width = width, .height = height, .delay = 9}));
    EXPECT_EQ(presenter->pushAdViewController()->view()->frame().size, expected);
  }
}

TEST_F(MyPushAdOperatorTest, theBannerFrameTakesAnySizeOfTheRecord) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(
      makeRecord({.embed = 3, .width = 0, .height = -5}));
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(presenter->pushAdViewController()->view()->frame(), (Rect{{500, 0}, {0, -5}}));
}

TEST_F(MyPushAdOperatorTest, withoutAHostViewItIsAPopupThatIsShownOnlyForEmbedZero) {
  const auto presenter = MyPushAdOperator::createInstanceWithHostView(nullptr);
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 3}));
  EXPECT_EQ(presenter->pushAdViewController()->pushAdMode(), MyPushAdModePopup);
  EXPECT_FALSE(presenter->isAdShownAsBanner());
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, IsEmpty());
  EXPECT_FALSE(popupWindow().visible);
}

TEST_F(MyPushAdOperatorTest, embedBelowZeroPreparesAPopupAndShowsNothing) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = -1}));
  EXPECT_EQ(presenter->pushAdViewController()->pushAdMode(), MyPushAdModePopup);
  EXPECT_EQ(fakes_.windows->windows.size(), 1U);
  fakes_.runLoop->runUntilIdle();
  EXPECT_FALSE(popupWindow().visible);
  EXPECT_THAT(webView()->loads, IsEmpty());
  EXPECT_THAT(events_, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, thePopupWindowFloatsAndShowsItsFirstControllerForGood) {
  const auto first = makeOperator();
  first->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  const auto second = makeOperator();
  second->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  EXPECT_EQ(fakes_.windows->windows.size(), 1U);
  EXPECT_EQ(popupWindow().level, WindowLevel::floating);
  EXPECT_EQ(popupWindow().contentView(), first->pushAdViewController()->view());
  EXPECT_EQ(second->popupAdWindow(), first->popupAdWindow());
  EXPECT_NE(second->pushAdViewController()->view(), popupWindow().contentView());
}

TEST_F(MyPushAdOperatorTest, aNegativeDelayCountsButNeverShows) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.delay = -1}));
  EXPECT_EQ(storedCount(), 1);
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), IsEmpty());
  fakes_.runLoop->advance(3600);
  EXPECT_THAT(events_, IsEmpty());
  EXPECT_THAT(hostView_->children, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, aDelayOfZeroStillShowsOnALaterPass) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.delay = 0}));
  EXPECT_THAT(hostView_->children, IsEmpty());
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), ElementsAre(0));
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(hostView_->children.size(), 1U);
}

TEST_F(MyPushAdOperatorTest, isShownAfterTheRecordsDelayAndNotWhileAMenuIsTracked) {
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.delay = 5}));
  fakes_.runLoop->advance(4.9);
  EXPECT_THAT(hostView_->children, IsEmpty());
  fakes_.runLoop->setTracksMenu(true);
  fakes_.runLoop->advance(10);
  EXPECT_THAT(hostView_->children, IsEmpty());
  fakes_.runLoop->setTracksMenu(false);
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(hostView_->children.size(), 1U);
}

TEST_F(MyPushAdOperatorTest, aScheduledShowingKeepsTheOperatorAlive) {
  auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.delay = 5}));
  const std::weak_ptr<MyPushAdOperator> watch = presenter;
  presenter.reset();
  EXPECT_FALSE(watch.expired());
  fakes_.runLoop->advance(5);
  EXPECT_EQ(events_.size(), 1U);
  fakes_.runLoop->runUntilIdle();
  EXPECT_TRUE(watch.expired());
}

// Showing.

TEST_F(MyPushAdOperatorTest, theBannerIsAddedPlacedAndLoaded) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 1}));
  fakes_.runLoop->runUntilIdle();
  const auto ad = presenter->pushAdViewController()->view();
  EXPECT_THAT(hostView_->children, ElementsAre(ad));
  EXPECT_EQ(ad->frame(), (Rect{{200, 250}, {300, 50}}));
  ASSERT_EQ(webView()->loads.size(), 1U);
  EXPECT_EQ(webView()->loads[0].html, "<p>page</p>");
  EXPECT_EQ(presenter->pushAdViewController()->title(), "Title");
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification));
  EXPECT_EQ(notifications_[0]->object(), ad);
}

TEST_F(MyPushAdOperatorTest, aBannerAlreadyInItsHostIsNotAnnouncedAgain) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  presenter->showAd();
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(events_.size(), 1U);
  EXPECT_EQ(webView()->loads.size(), 2U);
}

TEST_F(MyPushAdOperatorTest, aBannerWhoseHostIsGoneShowsNothing) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.delay = 5}));
  hostView_.reset();
  fakes_.runLoop->advance(5);
  EXPECT_THAT(events_, IsEmpty());
  EXPECT_THAT(webView()->loads, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, aHostThatIsDestroyedIsNoHostThoughItsViewIsKept) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.delay = 5}));
  hostView_->gone = true;
  fakes_.runLoop->advance(5);
  EXPECT_EQ(presenter->hostView(), nullptr);
  EXPECT_FALSE(presenter->isAdShownAsBanner());
  EXPECT_EQ(presenter->composeNotificationUserInfo()->count(kPushAdHostViewKey), 0U);
  EXPECT_THAT(events_, IsEmpty());
  EXPECT_THAT(webView()->loads, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, thePopupIsOrderedFrontPlacedAndLoaded) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(
      makeRecord({.embed = 0, .width = 400, .height = 300}));
  fakes_.runLoop->runUntilIdle();
  EXPECT_TRUE(popupWindow().visible);
  EXPECT_EQ(popupWindow().title, "Title");
  EXPECT_EQ(popupWindow().contentRectForFrameRect(popupWindow().frame()),
            (Rect{{520, 311.5}, {400, 300}}));
  EXPECT_EQ(webView()->loads.size(), 1U);
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification));
  EXPECT_TRUE(MyPushAdUtil::isPopupWindowForNotification(notifications_[0].get()));
}

TEST_F(MyPushAdOperatorTest, aSecondPopupWhileTheWindowIsVisibleIsOnlyAnnounced) {
  const auto first = makeOperator();
  first->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  fakes_.runLoop->runUntilIdle();
  const auto second = makeOperator();
  second->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(events_.size(), 2U);
  EXPECT_EQ(notifications_[1]->object(), second->pushAdViewController()->view());
  EXPECT_EQ(popupWindow().orderFrontCalls, 1);
  EXPECT_EQ(popupWindow().setFrames.size(), 1U);
  EXPECT_THAT(webView(1)->loads, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, aLaterPopupOperatorShowsTheClosedWindowAgain) {
  const auto first = makeOperator();
  first->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  fakes_.runLoop->runUntilIdle();
  popupWindow().close();
  const auto second = makeOperator();
  second->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(popupWindow().orderFrontCalls, 2);
  EXPECT_EQ(webView(1)->loads.size(), 1U);
}

TEST_F(MyPushAdOperatorTest, aRecordTakenAwayMeanwhileIsAnnouncedAsAnEmptyPopup) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 1}));
  presenter->setMyPushAdInfo(nullptr);
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification));
  EXPECT_EQ(notifications_[0]->userInfo(), std::nullopt);
  EXPECT_THAT(hostView_->children, IsEmpty());
  EXPECT_THAT(webView()->loads, IsEmpty());
}

// What the user does.

TEST_F(MyPushAdOperatorTest, aCloseClickRemovesTheBannerAndIsReported) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  presenter->pushAdViewController()->handleCloseButtonClicked();
  EXPECT_THAT(hostView_->children, IsEmpty());
  EXPECT_EQ(events_.size(), 1U);
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification, kPushAdDidCloseNotification));
  EXPECT_THAT(fakes_.log->lines(), ElementsAre());
  EXPECT_NE(presenter->pushAdViewController(), nullptr);
  EXPECT_TRUE(presenter->isAdShownAsBanner()) << "a closed banner still counts as one";
}

TEST_F(MyPushAdOperatorTest, aCloseClickInThePopupHasNoEffect) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  fakes_.runLoop->runUntilIdle();
  presenter->pushAdViewController()->handleCloseButtonClicked();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification));
  EXPECT_TRUE(popupWindow().visible);
}

TEST_F(MyPushAdOperatorTest, aCloseClickForABannerThatIsElsewhereIsLoggedAndRemovesIt) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  const auto elsewhere = std::make_shared<FakeView>();
  elsewhere->addSubview(presenter->pushAdViewController()->view());
  presenter->pushAdViewController()->handleCloseButtonClicked();
  EXPECT_THAT(elsewhere->children, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(operatorCheck("pushAdViewControllerCloseButtonDidClick:", 494,
                                        kVerifyFailedMessage)));
}

TEST_F(MyPushAdOperatorTest, aCloseClickOfAForeignControllerIsLoggedAndHandled) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  presenter->pushAdViewControllerCloseButtonDidClick(
      MyPushAdViewController::createInstanceWithPushAdMode(MyPushAdModeBanner));
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(operatorCheck("pushAdViewControllerCloseButtonDidClick:", 489,
                                        kVerifyFailedMessage)));
  EXPECT_THAT(hostView_->children, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, aClosedBannersPageIsEnded) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  const auto page = fakes_.interfaceLoader->webViews.at(0).lock();
  presenter->postPushAdOpenIAPNotificationWithURL(std::nullopt);
  EXPECT_EQ(page->endedPages, 0);
  presenter->pushAdViewControllerCloseButtonDidClick(presenter->pushAdViewController());
  EXPECT_EQ(page->endedPages, 1);
}

TEST_F(MyPushAdOperatorTest, aPopupsPageIsNotEndedByItsCloseControl) {
  const auto presenter = MyPushAdOperator::createInstanceWithHostView(nullptr);
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  presenter->pushAdViewControllerCloseButtonDidClick(presenter->pushAdViewController());
  EXPECT_EQ(fakes_.interfaceLoader->webViews.at(0).lock()->endedPages, 0);
}

TEST_F(MyPushAdOperatorTest, aPurchaseClickIsReportedAndChangesNothing) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  fakes_.runLoop->runUntilIdle();
  const auto url = Url::parse("https://example.com/buy?zamopeniap=1");
  presenter->pushAdViewController()->handleOpenIAPButtonClickedWithURL(url);
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification, kPushAdOpenIAPNotification));
  EXPECT_EQ(*notifications_[1]->userInfo()->at(kPushAdActionURLKey).as<Url>(), *url);
  EXPECT_EQ(hostView_->children.size(), 1U);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdOperatorTest, aPurchaseClickOfAForeignControllerIsLoggedAndReported) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  presenter->pushAdViewControllerOpenIAPButtonDidClickWithURL(nullptr, std::nullopt);
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(operatorCheck("pushAdViewController:openIAPButtonDidClickWithURL:", 504,
                                        kVerifyFailedMessage)));
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(events_.front(), kPushAdOpenIAPNotification);
}

// Placing.

TEST_F(MyPushAdOperatorTest, theBannerFollowsItsHostsSize) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 1}));
  fakes_.runLoop->runUntilIdle();
  hostView_->setFrame({{0, 0}, {800, 600}});
  EXPECT_EQ(presenter->pushAdViewController()->view()->frame(), (Rect{{500, 550}, {300, 50}}));
}

TEST_F(MyPushAdOperatorTest, aClosedBannerIsStillLaidOut) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 1}));
  fakes_.runLoop->runUntilIdle();
  presenter->pushAdViewController()->handleCloseButtonClicked();
  hostView_->setFrame({{0, 0}, {800, 600}});
  EXPECT_EQ(presenter->pushAdViewController()->view()->frame(), (Rect{{500, 550}, {300, 50}}));
}

TEST_F(MyPushAdOperatorTest, theHostsOwnOriginPlaysNoPart) {
  hostView_->setFrame({{70, 80}, {500, 300}});
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 5, .offsetx = 3}));
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(presenter->pushAdViewController()->view()->frame(), (Rect{{3, 0}, {300, 50}}));
}

TEST_F(MyPushAdOperatorTest, anotherHostsFrameMovesNothing) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 1}));
  fakes_.runLoop->runUntilIdle();
  const auto ad = presenter->pushAdViewController()->view();
  ad->setFrame({{1, 2}, {3, 4}});
  const auto other = std::make_shared<FakeView>();
  const auto second = MyPushAdOperator::createInstanceWithHostView(other);
  other->setFrame({{0, 0}, {800, 600}});
  fakes_.notificationCenter->post(Notification(kViewFrameDidChangeNotification, nullptr));
  EXPECT_EQ(ad->frame(), (Rect{{1, 2}, {3, 4}}));
}

TEST_F(MyPushAdOperatorTest, amongTenThousandHostsOneFrameChangeLaysOutOneBanner) {
  constexpr std::size_t kHosts = 10000;
  const auto record = makeRecord({.version = "", .embed = 1});
  std::vector<std::shared_ptr<FakeView>> hostViews;
  std::vector<std::shared_ptr<MyPushAdOperator>> presenters;
  for (std::size_t i = 0; i < kHosts; ++i) {
    hostViews.push_back(std::make_shared<FakeView>());
    presenters.push_back(
        MyPushAdOperator::createInstanceWithHostView(std::shared_ptr<View>(hostViews.back())));
    presenters.back()->processShowAdIfNeededWithPushAdInfo(record);
  }
  fakes_.runLoop->runUntilIdle();
  const auto layouts = [&](std::size_t index) {
    const auto view = presenters[index]->pushAdViewController()->view();
    return std::dynamic_pointer_cast<FakeBoxView>(view)->setFrameCalls;
  };
  std::vector<int> before(kHosts);
  for (std::size_t i = 0; i < kHosts; ++i) {
    before[i] = layouts(i);
  }
  constexpr std::size_t kResized = 4711;
  hostViews[kResized]->setFrame({{0, 0}, {800, 600}});
  for (std::size_t i = 0; i < kHosts; ++i) {
    ASSERT_EQ(layouts(i) - before[i], i == kResized ? 1 : 0) << i;
  }
}

TEST_F(MyPushAdOperatorTest, aPopupWithoutSizeTakesTheWindowsOuterSizeAsItsContent) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0, .width = 0}));
  popupWindow().setFrame({{10, 10}, {320, 240}});
  fakes_.runLoop->runUntilIdle();
  const Rect content = popupWindow().contentRectForFrameRect(popupWindow().frame());
  EXPECT_EQ(content.size, (Size{320, 240}));
  EXPECT_EQ(content.origin, (Point{560, 341.5}));
}

TEST_F(MyPushAdOperatorTest, aPopupOnNoScreenCentresItselfAndLogs) {
  fakes_.windows->screen = nullptr;
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(
      makeRecord({.embed = 0, .width = 400, .height = 300}));
  popupWindow().setFrame({{10, 20}, {30, 40}});
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(popupWindow().frame(), (Rect{{0, 0}, {400, 300 + FakeWindow::kTitleBarHeight}}));
  EXPECT_EQ(popupWindow().centerCalls, 1);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(operatorCheck("relayoutPushAdFrame", 264,
                                                             "***Error***: ZAM FATAL ERROR GOT!")));
}

TEST_F(MyPushAdOperatorTest, nothingMovesWithoutRecordWindowOrWithAnotherEmbed) {
  const auto presenter = makeOperator();
  presenter->relayoutPushAdFrame();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = -1}));
  presenter->relayoutPushAdFrame();
  EXPECT_THAT(popupWindow().setFrames, IsEmpty());
  presenter->setMyPushAdInfo(nullptr);
  presenter->relayoutPushAdFrame();
  EXPECT_THAT(popupWindow().setFrames, IsEmpty());
}

TEST_F(MyPushAdOperatorTest, thePopupIsLaidOutOnceOnly) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  fakes_.runLoop->runUntilIdle();
  hostView_->setFrame({{0, 0}, {800, 600}});
  EXPECT_EQ(popupWindow().setFrames.size(), 1U);
}

TEST_F(MyPushAdOperatorTest, everyOperatorOfAClosingPopupReportsOnce) {
  const auto first = makeOperator();
  const auto second = makeOperator();
  const auto banner = makeOperator();
  first->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
  second->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
  banner->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 1}));
  const auto laterBanner = makeOperator();
  laterBanner->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 1}));
  fakes_.runLoop->runUntilIdle();
  events_.clear();
  popupWindow().close();
  EXPECT_THAT(events_, IsEmpty());
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdDidCloseNotification, kPushAdDidCloseNotification,
                                   kPushAdDidCloseNotification))
      << "a banner's operator made after the pop-up has its window, too";
  events_.clear();
  fakes_.notificationCenter->post(
      Notification(kWindowWillCloseNotification, first->popupAdWindow()));
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, IsEmpty()) << "a window that is not visible cannot be closed";
}

TEST_F(MyPushAdOperatorTest, anotherWindowsClosingIsIgnored) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  fakes_.runLoop->runUntilIdle();
  const auto other = fakes_.windows->createWindowWithContentView(std::make_shared<FakeView>());
  other->makeKeyAndOrderFront();
  other->close();
  fakes_.notificationCenter->post(Notification(kWindowWillCloseNotification, nullptr));
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification));
}

TEST_F(MyPushAdOperatorTest, anOperatorThatIsGoneHearsNothing) {
  const std::size_t before = fakes_.notificationCenter->countObservers();
  auto presenter = makeOperator();
  EXPECT_EQ(fakes_.notificationCenter->countObservers(), before + 2);
  presenter.reset();
  EXPECT_EQ(fakes_.notificationCenter->countObservers(), before);
}

// Reports.

TEST_F(MyPushAdOperatorTest, withoutRecordThereIsNoUserInfo) {
  const auto presenter = makeOperator();
  EXPECT_EQ(presenter->composeNotificationUserInfo(), std::nullopt);
  presenter->postPushAdOpenIAPNotificationWithURL(Url::parse("https://example.com/buy"));
  fakes_.runLoop->runUntilIdle();
  ASSERT_EQ(notifications_.size(), 1U);
  EXPECT_EQ(notifications_[0]->userInfo(), std::nullopt);
}

TEST_F(MyPushAdOperatorTest, postingWithoutAnAdViewIsLoggedAndGoesOutWithoutObject) {
  const auto presenter = makeOperator();
  presenter->postPushAdWillShowNotification();
  presenter->postPushAdDidCloseNotification();
  presenter->postPushAdOpenIAPNotificationWithURL(std::nullopt);
  EXPECT_THAT(
      fakes_.log->lines(),
      ElementsAre(
          operatorCheck("postPushAdWillShowNotification", 518, kVerifyFailedMessage),
          operatorCheck("postPushAdDidCloseNotification", 530, kVerifyFailedMessage),
          operatorCheck("postPushAdOpenIAPNotificationWithURL:", 542, kVerifyFailedMessage)));
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification, kPushAdDidCloseNotification,
                                   kPushAdOpenIAPNotification));
  EXPECT_EQ(notifications_[0]->object(), nullptr);
}

TEST_F(MyPushAdOperatorTest, theUserInfoNamesRecordModeHostAndPopup) {
  const auto popup = makeOperator();
  popup->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  const auto banner = makeOperator();
  const auto record = makeRecord({.embed = 2});
  banner->processShowAdIfNeededWithPushAdInfo(record);
  const auto userInfo = banner->composeNotificationUserInfo();
  ASSERT_TRUE(userInfo);
  EXPECT_EQ(userInfo->size(), 4U);
  EXPECT_EQ(userInfo->at(kPushAdInfoKey).object<const MyPushAdInfo>(), record);
  EXPECT_EQ(userInfo->at(kPushAdIsPopupWindowKey).booleanValue(), false);
  EXPECT_EQ(userInfo->at(kPushAdHostViewKey).object<View>(), hostView_);
  EXPECT_EQ(userInfo->at(kPushAdPopupWindowKey).object<Window>(), popup->popupAdWindow())
      << "a banner's operator made after a pop-up carries its window, too";
}

TEST_F(MyPushAdOperatorTest, theHostViewIsLeftOutOnceItIsGone) {
  const auto presenter = makeOperator();
  presenter->setMyPushAdInfo(makeRecord());
  hostView_.reset();
  const auto userInfo = presenter->composeNotificationUserInfo();
  EXPECT_EQ(userInfo->count(kPushAdHostViewKey), 0U);
  EXPECT_EQ(userInfo->count(kPushAdPopupWindowKey), 0U);
  EXPECT_EQ(userInfo->at(kPushAdIsPopupWindowKey).booleanValue(), true);
}

TEST_F(MyPushAdOperatorTest, aPurchaseReportWithoutUrlHasNoUrlKey) {
  const auto presenter = makeOperator();
  presenter->setMyPushAdInfo(makeRecord());
  presenter->postPushAdOpenIAPNotificationWithURL(std::nullopt);
  fakes_.runLoop->runUntilIdle();
  ASSERT_TRUE(notifications_[0]->userInfo());
  EXPECT_EQ(notifications_[0]->userInfo()->count(kPushAdActionURLKey), 0U);
}

TEST_F(MyPushAdOperatorTest, twoPostsArriveInOrderAfterTheSequence) {
  const auto presenter = makeOperator();
  presenter->setMyPushAdInfo(makeRecord());
  presenter->postPushAdWillShowNotification();
  presenter->postPushAdOpenIAPNotificationWithURL(std::nullopt);
  EXPECT_THAT(events_, IsEmpty());
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre(kPushAdWillShowNotification, kPushAdOpenIAPNotification));
}

}  // namespace
}  // namespace qorix
