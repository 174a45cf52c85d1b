#include <gmock/gmock.h>

#include <vector>

#include <qorix/MyPushAdEvent.h>
#include <qorix/MyPushAdNotifications.h>
#include <qorix/platform/DomNode.h>
#include <qorix/platform/Platform.h>

#include "fakes/FakePlatform.h"
#include "fakes/FakeView.h"
#include "support/Records.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class MyPushAdEventTest : public ::testing::Test {
 protected:
  MyPushAdEventTest() { installPlatform(fakes_.services()); }

  Dictionary userInfo(bool isPopup) const {
    return {{kPushAdInfoKey, std::shared_ptr<const MyPushAdInfo>(record_)},
            {kPushAdIsPopupWindowKey, isPopup},
            {kPushAdHostViewKey, hostView_},
            {kPushAdPopupWindowKey, window_}};
  }

  FakePlatform fakes_;
  const std::shared_ptr<const MyPushAdInfo> record_ = makeRecord({});
  const std::shared_ptr<View> hostView_ = std::make_shared<FakeView>();
  const std::shared_ptr<View> adView_ = std::make_shared<FakeView>();
  const std::shared_ptr<Window> window_ = fakes_.windows->createWindowWithContentView(adView_);
};

TEST_F(MyPushAdEventTest, readsABanner) {
  adView_->setFrame({{10, 20}, {300, 100}});
  const auto event =
      MyPushAdEvent::read(Notification(kPushAdWillShowNotification, adView_, userInfo(false)));
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->kind, MyPushAdEvent::Kind::willShow);
  EXPECT_EQ(event->name, kPushAdWillShowNotification);
  EXPECT_FALSE(event->isPopup);
  EXPECT_EQ(event->info, record_);
  EXPECT_EQ(event->hostView, hostView_);
  EXPECT_EQ(event->frame, (Rect{{10, 20}, {300, 100}}));
  EXPECT_EQ(event->url, std::nullopt);
  EXPECT_EQ(event->element, std::nullopt);
}

TEST_F(MyPushAdEventTest, aPopupIsWhereTheContentOfItsWindowIs) {
  window_->setFrame(window_->frameRectForContentRect({{400, 300}, {640, 480}}));
  const auto event =
      MyPushAdEvent::read(Notification(kPushAdDidCloseNotification, adView_, userInfo(true)));
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->kind, MyPushAdEvent::Kind::didClose);
  EXPECT_TRUE(event->isPopup);
  EXPECT_EQ(event->frame, (Rect{{400, 300}, {640, 480}}));
}

TEST_F(MyPushAdEventTest, aPurchaseHasItsAddress) {
  Dictionary details = userInfo(false);
  details.emplace(kPushAdActionURLKey, Url::parse("https://example.com/?zamopeniap=1").value());
  const auto event =
      MyPushAdEvent::read(Notification(kPushAdOpenIAPNotification, adView_, details));
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->kind, MyPushAdEvent::Kind::openIAP);
  ASSERT_TRUE(event->url.has_value());
  EXPECT_EQ(event->url->absoluteString(), "https://example.com/?zamopeniap=1");
}

TEST_F(MyPushAdEventTest, aNavigationHasItsElementAndNothingElse) {
  const auto element = std::make_shared<DomHtmlElement>("buy", "cta");
  const auto event =
      MyPushAdEvent::read(Notification(kPushAdIsTriggeringNavigationNotification, nullptr,
                                       Dictionary{{kPushAdActionHTMLElementKey, element},
                                                  {kPushAdActionHTMLElementIdNameKey, "buy"},
                                                  {kPushAdActionHTMLElementClassNameKey, "cta"}}));
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->kind, MyPushAdEvent::Kind::triggeringNavigation);
  EXPECT_EQ(event->element, "{(idName is buy)(className is cta)}");
  EXPECT_EQ(event->info, nullptr);
  EXPECT_EQ(event->hostView, nullptr);
  EXPECT_EQ(event->frame, std::nullopt);
}

TEST_F(MyPushAdEventTest, readsWhatLacksItsDetailsAndLogsNothing) {
  for (const char* name : {kPushAdWillShowNotification, kPushAdDidCloseNotification,
                           kPushAdOpenIAPNotification, kPushAdIsTriggeringNavigationNotification}) {
    EXPECT_TRUE(MyPushAdEvent::read(Notification(name, nullptr)).has_value());
    EXPECT_TRUE(MyPushAdEvent::read(Notification(name, hostView_, Dictionary())).has_value());
  }
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdEventTest, othersNotificationsAreNone) {
  EXPECT_EQ(MyPushAdEvent::read(Notification("NSWindowWillCloseNotification", window_)),
            std::nullopt);
}

TEST_F(MyPushAdEventTest, isObservedAsLongAsTheObservationsAreHeld) {
  std::vector<MyPushAdEvent::Kind> kinds;
  auto observations =
      MyPushAdEvent::observe([&](const MyPushAdEvent& event) { kinds.push_back(event.kind); });
  const auto postAll = [&] {
    for (const char* name :
         {kPushAdWillShowNotification, kPushAdDidCloseNotification, kPushAdOpenIAPNotification,
          kPushAdIsTriggeringNavigationNotification}) {
      fakes_.notificationCenter->post(Notification(name, adView_, userInfo(false)));
    }
  };
  postAll();
  EXPECT_THAT(kinds,
              ElementsAre(MyPushAdEvent::Kind::willShow, MyPushAdEvent::Kind::didClose,
                          MyPushAdEvent::Kind::openIAP, MyPushAdEvent::Kind::triggeringNavigation));
  observations.clear();
  postAll();
  EXPECT_EQ(kinds.size(), 4U);
  EXPECT_EQ(fakes_.notificationCenter->countObservers(), 0U);
}

}  // namespace
}  // namespace qorix
