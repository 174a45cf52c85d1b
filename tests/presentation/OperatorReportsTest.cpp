// Every notification as an observer gets it: its object and the whole of its user info.

#include <gmock/gmock.h>

#include <map>

#include <qorix/MyPushAdUtil.h>

#include "presentation/OperatorTest.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Told = std::map<std::string, std::string>;

class OperatorReportsTest : public OperatorTest {
 protected:
  std::shared_ptr<MyPushAdOperator> showing(const std::shared_ptr<MyPushAdInfo>& record) {
    auto presenter = makeOperator();
    presenter->processShowAdIfNeededWithPushAdInfo(record);
    fakes_.runLoop->runUntilIdle();
    return presenter;
  }

  /// A notification's user info with objects under the names that they have here.
  Told told(const Notification& notification) {
    Told texts;
    for (const auto& [key, value] : notification.userInfo().value()) {
      if (const auto object = value.object<const Object>()) {
        texts[key] = nameOf(object);
      } else if (const bool* flag = value.as<bool>()) {
        texts[key] = *flag ? "YES" : "NO";
      } else {
        texts[key] = value.description();
      }
    }
    return texts;
  }

  std::string nameOf(const std::shared_ptr<const Object>& object) {
    return object == record_     ? "record"
           : object == hostView_ ? "host view"
           : !fakes_.windows->windows.empty() && object == fakes_.windows->windows[0]
               ? "pop-up"
               : "something else";
  }

  std::shared_ptr<MyPushAdInfo> record_ = makeRecord({.version = ""});
  const std::optional<Url> buy_ = Url::parse("https://example.com/buy?zamopeniap=1");
};

TEST_F(OperatorReportsTest, aBannersNotificationsTellRecordModeAndHostView) {
  const auto presenter = showing(record_);
  const auto ad = presenter->pushAdViewController()->view();
  presenter->pushAdViewController()->handleOpenIAPButtonClickedWithURL(buy_);
  presenter->pushAdViewController()->handleCloseButtonClicked();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre("ZAMPushAdWillShowNotification", "ZAMPushAdOpenIAPNotification",
                                   "ZAMPushAdDidCloseNotification"));
  for (const auto& each : notifications_) {
    EXPECT_EQ(each->object(), ad);
    Told expected{{"ZAMPushAdInfoKey", "record"},
                  {"ZAMPushAdIsPopupWindowKey", "NO"},
                  {"ZAMPushAdHostViewKey", "host view"}};
    if (each->name() == "ZAMPushAdOpenIAPNotification") {
      expected["ZAMPushAdActionURLKey"] = "https://example.com/buy?zamopeniap=1";
    }
    EXPECT_EQ(told(*each), expected) << each->name();
  }
}

TEST_F(OperatorReportsTest, aPopupsNotificationsTellItsWindowToo) {
  record_->setEmbed(0);
  const auto presenter = showing(record_);
  presenter->pushAdViewController()->handleOpenIAPButtonClickedWithURL(buy_);
  popupWindow().close();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(events_, ElementsAre("ZAMPushAdWillShowNotification", "ZAMPushAdOpenIAPNotification",
                                   "ZAMPushAdDidCloseNotification"));
  for (const auto& each : notifications_) {
    EXPECT_EQ(each->object(), presenter->pushAdViewController()->view());
    Told expected{{"ZAMPushAdInfoKey", "record"},
                  {"ZAMPushAdIsPopupWindowKey", "YES"},
                  {"ZAMPushAdHostViewKey", "host view"},
                  {"ZAMPushAdPopupWindowKey", "pop-up"}};
    if (each->name() == "ZAMPushAdOpenIAPNotification") {
      expected["ZAMPushAdActionURLKey"] = "https://example.com/buy?zamopeniap=1";
    }
    EXPECT_EQ(told(*each), expected) << each->name();
  }
}

TEST_F(OperatorReportsTest, aBannerAfterAPopupTellsTheWindowAndIsNoneAllTheSame) {
  const auto popup = makeOperator();
  popup->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0, .delay = 9}));
  showing(record_);
  ASSERT_EQ(notifications_.size(), 1U);
  EXPECT_EQ(told(*notifications_[0]), (Told{{"ZAMPushAdInfoKey", "record"},
                                            {"ZAMPushAdIsPopupWindowKey", "NO"},
                                            {"ZAMPushAdHostViewKey", "host view"},
                                            {"ZAMPushAdPopupWindowKey", "pop-up"}}));
  EXPECT_FALSE(MyPushAdUtil::isPopupWindowForNotification(notifications_[0].get()));
}

TEST_F(OperatorReportsTest, thePopupFlagTellsTheShowingAndNotTheMode) {
  const auto banner = showing(record_);
  const auto popup = makeOperator();
  popup->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = "", .embed = 0, .delay = 9}));
  popup->setMyPushAdInfo(makeRecord({.embed = 1}));
  EXPECT_EQ(popup->pushAdViewController()->pushAdMode(), MyPushAdModePopup);
  EXPECT_EQ(popup->composeNotificationUserInfo()->at(kPushAdIsPopupWindowKey).booleanValue(),
            false);
  notifications_.clear();
  hostView_.reset();
  EXPECT_EQ(banner->pushAdViewController()->pushAdMode(), MyPushAdModeBanner);
  banner->postPushAdDidCloseNotification();
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(told(*notifications_.back()),
            (Told{{"ZAMPushAdInfoKey", "record"}, {"ZAMPushAdIsPopupWindowKey", "YES"}}));
}

TEST_F(OperatorReportsTest, aPostedShowingIsAboutItsHostViewAndNoOther) {
  showing(record_);
  fakes_.log->takeLines();
  const Notification& willShow = *notifications_.at(0);
  EXPECT_TRUE(MyPushAdUtil::checkEqualsWithHostView(hostView_.get(), &willShow));
  const FakeView other;
  EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(&other, &willShow));
  const auto ad = std::dynamic_pointer_cast<View>(willShow.object());
  EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(ad.get(), &willShow));
  EXPECT_FALSE(MyPushAdUtil::isPopupWindowForNotification(&willShow));
  EXPECT_EQ(MyPushAdUtil::fetchPushAdInfoForNotification(&willShow), record_);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(OperatorReportsTest, theUserInfoIsMadeAnewForEachNotification) {
  const auto presenter = showing(record_);
  presenter->pushAdViewController()->handleOpenIAPButtonClickedWithURL(buy_);
  const auto later = makeRecord({.adId = 99});
  presenter->setMyPushAdInfo(later);
  presenter->pushAdViewController()->handleCloseButtonClicked();
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(told(*notifications_.at(1)).at("ZAMPushAdInfoKey"), "record");
  EXPECT_EQ(MyPushAdUtil::fetchPushAdInfoForNotification(notifications_.at(2).get()), later);
  EXPECT_EQ(told(*notifications_.at(2)).count("ZAMPushAdActionURLKey"), 0U);
}

TEST_F(OperatorReportsTest, notificationsArriveWhileTheUserTracksAMenu) {
  const auto presenter = showing(record_);
  fakes_.runLoop->setTracksMenu(true);
  presenter->pushAdViewController()->handleCloseButtonClicked();
  EXPECT_EQ(events_.size(), 1U);
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(events_.size(), 2U);
}

}  // namespace
}  // namespace qorix
