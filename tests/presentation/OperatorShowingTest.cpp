// The steps of a showing, in their order.

#include <gmock/gmock.h>

#include "presentation/OperatorTest.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What is logged when a record has no text of the kind that is asked for.
constexpr const char* kNoTextLine =
    "+[MyPushAdInfo localizedValueInDict:] 130: ZAM <=> ZAM Verify failed!";

class OperatorShowingTest : public OperatorTest {};

TEST_F(OperatorShowingTest, aBannerIsAnnouncedThenAddedThenPlacedThenLoaded) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(
      makeRecord({.embed = 3, .width = 0, .height = -5}));
  const auto ad = presenter->pushAdViewController()->view();
  std::vector<std::string> steps;
  runLoop_->onDispatch = [&] {
    EXPECT_EQ(ad->superview(), nullptr);
    steps.emplace_back("announced");
  };
  ad->setPostsFrameChangedNotifications(true);
  fakes_.notificationCenter
      ->addObserver(kViewFrameDidChangeNotification,
                    [&](const Notification& /*each*/) {
                      EXPECT_EQ(ad->superview(), hostView_);
                      EXPECT_THAT(webView()->loads, IsEmpty());
                      steps.emplace_back("placed");
                    })
      .keep();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(steps, ElementsAre("announced", "placed"));
  EXPECT_EQ(webView()->loads.size(), 1U);
}

TEST_F(OperatorShowingTest, aBannerIsNamedByItsTitleForAssistiveTechnology) {
  const auto nameOf = [this](const std::optional<LocalizedTexts>& titles, std::int64_t embed) {
    const auto record = makeRecord({.version = "", .embed = embed});
    record->setTitleDict(titles);
    const auto presenter = makeOperator();
    presenter->processShowAdIfNeededWithPushAdInfo(record);
    fakes_.runLoop->runUntilIdle();
    return dynamic_cast<FakeBoxView&>(*presenter->pushAdViewController()->view()).accessibleName;
  };
  EXPECT_EQ(nameOf(LocalizedTexts{{"default", "The viewer"}}, 3), "The viewer");
  EXPECT_EQ(nameOf(std::nullopt, 3), "");
  EXPECT_EQ(nameOf(LocalizedTexts{{"default", "The viewer"}}, 0), "") << "its window has the title";
}

TEST_F(OperatorShowingTest, aPopupIsAnnouncedThenOrderedFrontThenPlacedThenLoaded) {
  struct WatchedScreen : FakeScreen {
    using FakeScreen::FakeScreen;
    Rect visibleFrame() const override {
      onPlacing();
      return FakeScreen::visibleFrame();
    }
    std::function<void()> onPlacing;
  };
  const auto screen = std::make_shared<WatchedScreen>(Rect{{0, 0}, {1000, 800}});
  std::vector<std::string> steps;
  screen->onPlacing = [&] {
    EXPECT_TRUE(popupWindow().visible);
    EXPECT_THAT(webView()->loads, IsEmpty());
    steps.emplace_back("placed");
  };
  runLoop_->onDispatch = [&] {
    EXPECT_FALSE(popupWindow().visible);
    steps.emplace_back("announced");
  };
  fakes_.windows->screen = screen;
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(steps, ElementsAre("announced", "placed"));
  EXPECT_EQ(webView()->loads.size(), 1U);
}

TEST_F(OperatorShowingTest, titleAndPageAreLookedUpEvenWhenThePopupIsOnlyAnnounced) {
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
  fakes_.runLoop->runUntilIdle();
  const auto record = makeRecord({.version = "", .embed = 0});
  record->setTitleDict(LocalizedTexts{});
  record->setHtmlContentsDict(LocalizedTexts{});
  const auto second = makeOperator();
  second->processShowAdIfNeededWithPushAdInfo(record);
  fakes_.log->takeLines();
  runLoop_->onDispatch = [&] { EXPECT_EQ(fakes_.log->lines().size(), 2U); };
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kNoTextLine, kNoTextLine));
  EXPECT_EQ(events_.size(), 2U);
}

TEST_F(OperatorShowingTest, titleAndPageAreLookedUpEvenWhenNothingIsShown) {
  const auto record = makeRecord({.embed = -1});
  record->setTitleDict(std::nullopt);
  record->setHtmlContentsDict(std::nullopt);
  makeOperator()->processShowAdIfNeededWithPushAdInfo(record);
  fakes_.log->takeLines();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kNoTextLine, kNoTextLine));
  EXPECT_THAT(events_, IsEmpty());
}

TEST_F(OperatorShowingTest, onlyTheWindowsOwnControllerNamesTheWindow) {
  makeOperator()->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0}));
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(popupWindow().title, "Title");
  popupWindow().close();
  for (const std::int64_t embed : {1, 0}) {
    const auto record = makeRecord({.version = "", .embed = embed});
    record->setTitleDict(LocalizedTexts{{"default", "Another"}});
    const auto presenter = makeOperator();
    presenter->processShowAdIfNeededWithPushAdInfo(record);
    fakes_.runLoop->runUntilIdle();
    EXPECT_EQ(presenter->pushAdViewController()->title(), "Another");
    EXPECT_EQ(popupWindow().title, "Title") << embed;
  }
}

TEST_F(OperatorShowingTest, whatIsPreparedIsSizedByWidthAndHeightTogether) {
  struct Case {
    std::int64_t width;
    std::int64_t height;
    Size expected;
  };
  for (const auto& [width, height, expected] :
       {Case{1, 1, {1, 1}}, Case{0, 50, {7, 8}}, Case{300, 0, {7, 8}}, Case{0, 0, {7, 8}},
        Case{-1, -1, {7, 8}}, Case{-1, 50, {7, 8}}, Case{300, -1, {7, 8}}}) {
    const auto presenter = makeOperator();
    presenter->setMyPushAdInfo(makeRecord({.width = width, .height = height, .delay = -1}));
    const auto controller =
        MyPushAdViewController::createInstanceWithPushAdMode(MyPushAdModeBanner);
    controller->view()->setFrame({{0, 0}, {7, 8}});
    presenter->setPushAdViewController(controller);
    presenter->prepareToShowAd();
    EXPECT_EQ(controller->view()->frame().size, expected) << width << " x " << height;
  }
}

TEST_F(OperatorShowingTest, aPopupIsPlacedWithItsOwnSizeOnlyWhenBothAreAboveZero) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord({.embed = 0}));
  for (const auto& [width, height] : {std::pair<std::int64_t, std::int64_t>{400, 0},
                                      {0, 300},
                                      {0, 0},
                                      {-1, -1},
                                      {400, -1},
                                      {-1, 300}}) {
    popupWindow().setFrame({{10, 10}, {320, 240}});
    presenter->setMyPushAdInfo(makeRecord({.embed = 0, .width = width, .height = height}));
    presenter->relayoutPushAdFrame();
    EXPECT_EQ(popupWindow().contentRectForFrameRect(popupWindow().frame()),
              (Rect{{560, 341.5}, {320, 240}}))
        << width << " x " << height;
  }
  presenter->setMyPushAdInfo(makeRecord({.embed = 0, .width = 1, .height = 1}));
  presenter->relayoutPushAdFrame();
  EXPECT_EQ(popupWindow().contentRectForFrameRect(popupWindow().frame()).size, (Size{1, 1}));
}

TEST_F(OperatorShowingTest, aBannerInAnotherViewIsTakenOverAndAnnounced) {
  const auto presenter = makeOperator();
  presenter->processShowAdIfNeededWithPushAdInfo(makeRecord());
  const auto ad = presenter->pushAdViewController()->view();
  const auto elsewhere = std::make_shared<FakeView>();
  elsewhere->addSubview(ad);
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(elsewhere->children, IsEmpty());
  EXPECT_THAT(hostView_->children, ElementsAre(ad));
  EXPECT_EQ(events_.size(), 1U);
}

TEST_F(OperatorShowingTest, aRecordIsUsedToTheEndOfThePreparationThoughTheHostTakesItAway) {
  struct ActingLog : RecordingLog {
    void write(std::string_view message) override {
      RecordingLog::write(message);
      act();
    }
    std::function<void()> act;
  };
  const auto log = std::make_shared<ActingLog>();
  auto services = fakes_.services();
  services.log = log;
  installPlatform(std::move(services));
  const auto presenter = makeOperator();
  presenter->setMyPushAdInfo(makeRecord({.adId = 0, .delay = 5}));
  log->act = [&] { presenter->setMyPushAdInfo(nullptr); };
  presenter->prepareToShowAd();
  EXPECT_EQ(presenter->pushAdViewController()->pushAdMode(), MyPushAdModeBanner);
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), ElementsAre(5));
}

}  // namespace
}  // namespace qorix
