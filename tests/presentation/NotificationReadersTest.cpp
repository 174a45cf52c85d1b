#include <gmock/gmock.h>

#include <thread>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdUtil.h>

#include "fakes/FakePlatform.h"
#include "support/CheckLines.h"
#include "support/Records.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string readerCheck(const std::string& method, int line) {
  return checkLine("+[MyPushAdUtil " + method + "]", line, kFatalMessage);
}

class NotificationReadersTest : public ::testing::Test {
 protected:
  NotificationReadersTest() { installPlatform(fakes_.services()); }

  static Notification willShow(Dictionary userInfo) {
    return Notification(kPushAdWillShowNotification, nullptr, std::move(userInfo));
  }

  static Notification triggering(Dictionary userInfo) {
    return Notification(kPushAdIsTriggeringNavigationNotification, nullptr, std::move(userInfo));
  }

  FakePlatform fakes_;
  std::shared_ptr<FakeView> view_ = std::make_shared<FakeView>();
  std::shared_ptr<DomHtmlElement> element_ = std::make_shared<DomHtmlElement>("buy", "cta");
  const Notification withoutUserInfo_{kPushAdWillShowNotification, nullptr};
};

// Is it about my host view?

TEST_F(NotificationReadersTest, knowsTheVeryHostViewOnly) {
  const auto notification = willShow({{kPushAdHostViewKey, view_}});
  EXPECT_TRUE(MyPushAdUtil::checkEqualsWithHostView(view_.get(), &notification));
  const FakeView equalButOther;
  EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(&equalButOther, &notification));
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(NotificationReadersTest, aHostViewThatIsNoViewIsLogged) {
  const auto notification = willShow({{kPushAdHostViewKey, view_}});
  const RecordOf values;
  const auto foreign = makeRecord(values);
  EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(nullptr, &notification));
  EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(foreign.get(), nullptr));
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(readerCheck("checkEqualsWithHostView:forNotification:", 309),
                          readerCheck("checkEqualsWithHostView:forNotification:", 309)));
}

TEST_F(NotificationReadersTest, whatIsNoNotificationIsLoggedByTheHostViewReader) {
  EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(view_.get(), nullptr));
  EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(view_.get(), view_.get()));
  EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(view_.get(), &withoutUserInfo_));
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(readerCheck("checkEqualsWithHostView:forNotification:", 310),
                          readerCheck("checkEqualsWithHostView:forNotification:", 310),
                          readerCheck("checkEqualsWithHostView:forNotification:", 311)));
}

TEST_F(NotificationReadersTest, aMissingOrForeignHostViewValueIsNoWithoutALog) {
  for (const auto& userInfo : {Dictionary{}, Dictionary{{kPushAdHostViewKey, "view"}},
                               Dictionary{{kPushAdHostViewKey, makeRecord()}},
                               Dictionary{{kPushAdHostViewKey, Value()}}}) {
    const auto notification = willShow(userInfo);
    EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(view_.get(), &notification));
  }
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

// Is it a pop-up?

TEST_F(NotificationReadersTest, readsThePopupFlag) {
  for (const auto& [value, expected] :
       {std::pair<Value, bool>{true, true}, {false, false}, {1, true}, {0, false}, {0.5, true}}) {
    const auto notification = willShow({{kPushAdIsPopupWindowKey, value}});
    EXPECT_EQ(MyPushAdUtil::isPopupWindowForNotification(&notification), expected);
  }
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(NotificationReadersTest, aPopupFlagThatIsATextIsNoWithoutALog) {
  for (const auto& userInfo : {Dictionary{}, Dictionary{{kPushAdIsPopupWindowKey, "YES"}},
                               Dictionary{{kPushAdIsPopupWindowKey, view_}}}) {
    const auto notification = willShow(userInfo);
    EXPECT_FALSE(MyPushAdUtil::isPopupWindowForNotification(&notification));
  }
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(NotificationReadersTest, whatIsNoNotificationIsLoggedByThePopupReader) {
  EXPECT_FALSE(MyPushAdUtil::isPopupWindowForNotification(nullptr));
  EXPECT_FALSE(MyPushAdUtil::isPopupWindowForNotification(view_.get()));
  EXPECT_FALSE(MyPushAdUtil::isPopupWindowForNotification(&withoutUserInfo_));
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(readerCheck("isPopupWindowForNotification:", 334),
                                               readerCheck("isPopupWindowForNotification:", 334),
                                               readerCheck("isPopupWindowForNotification:", 335)));
}

// Which advertisement?

TEST_F(NotificationReadersTest, findsTheRecordAndNeverLogs) {
  const auto record = makeRecord();
  const auto notification = willShow({{kPushAdInfoKey, record}});
  const auto foreign = willShow({{kPushAdInfoKey, view_}});
  const auto text = willShow({{kPushAdInfoKey, "record"}});
  EXPECT_EQ(MyPushAdUtil::fetchPushAdInfoForNotification(&notification), record);
  EXPECT_EQ(MyPushAdUtil::fetchPushAdInfoForNotification(&foreign), nullptr);
  EXPECT_EQ(MyPushAdUtil::fetchPushAdInfoForNotification(&text), nullptr);
  EXPECT_EQ(MyPushAdUtil::fetchPushAdInfoForNotification(&withoutUserInfo_), nullptr);
  EXPECT_EQ(MyPushAdUtil::fetchPushAdInfoForNotification(view_.get()), nullptr);
  EXPECT_EQ(MyPushAdUtil::fetchPushAdInfoForNotification(nullptr), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

// Which element?

TEST_F(NotificationReadersTest, describesTheElementFromTheUserInfo) {
  const auto describe = [&](Dictionary userInfo) {
    userInfo[kPushAdActionHTMLElementKey] = element_;
    const auto notification = triggering(std::move(userInfo));
    return MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&notification);
  };
  EXPECT_EQ(describe({{kPushAdActionHTMLElementIdNameKey, "buy"},
                      {kPushAdActionHTMLElementClassNameKey, "cta"}}),
            "{(idName is buy)(className is cta)}");
  EXPECT_EQ(describe({{kPushAdActionHTMLElementIdNameKey, "buy"}}), "{(idName is buy)}");
  EXPECT_EQ(describe({{kPushAdActionHTMLElementClassNameKey, "cta"}}), "{(className is cta)}");
  EXPECT_EQ(describe({}), "{}") << "the element itself is not read again";
  EXPECT_EQ(describe({{kPushAdActionHTMLElementIdNameKey, ""},
                      {kPushAdActionHTMLElementClassNameKey, 5}}),
            "{}");
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(NotificationReadersTest, aTriggeringNotificationHasNeitherHostViewNorRecord) {
  const auto notification = triggering({{kPushAdActionHTMLElementKey, element_}});
  EXPECT_FALSE(MyPushAdUtil::checkEqualsWithHostView(view_.get(), &notification));
  EXPECT_EQ(MyPushAdUtil::fetchPushAdInfoForNotification(&notification), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
  EXPECT_EQ(MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&notification), "{}");
}

TEST_F(NotificationReadersTest, aWillShowNotificationHasNoElement) {
  const auto notification = willShow({{kPushAdInfoKey, makeRecord()}});
  const auto foreign = willShow({{kPushAdActionHTMLElementKey, view_}});
  EXPECT_EQ(MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&notification), std::nullopt);
  EXPECT_EQ(MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&foreign), std::nullopt);
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(readerCheck("fetchHTMLElementDescriptionForNotification:", 379),
                          readerCheck("fetchHTMLElementDescriptionForNotification:", 379)));
}

TEST_F(NotificationReadersTest, whatIsNoNotificationIsLoggedByTheElementReader) {
  EXPECT_EQ(MyPushAdUtil::fetchHTMLElementDescriptionForNotification(nullptr), std::nullopt);
  EXPECT_EQ(MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&withoutUserInfo_),
            std::nullopt);
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(readerCheck("fetchHTMLElementDescriptionForNotification:", 375),
                          readerCheck("fetchHTMLElementDescriptionForNotification:", 376)));
}

// Posting.

TEST_F(NotificationReadersTest, aPostArrivesAfterTheCallAndKeepsItsValuesAlive) {
  std::vector<std::string> names;
  fakes_.notificationCenter
      ->addObserver("a",
                    [&](const Notification& each) {
                      names.push_back(each.name());
                      EXPECT_NE(each.object(), nullptr);
                      EXPECT_EQ(each.userInfo()->at("key").integerValue(), 1);
                    })
      .keep();
  MyPushAdUtil::postOnMainThreadNotificationName("a", std::make_shared<FakeView>(),
                                                 Dictionary{{"key", 1}});
  EXPECT_THAT(names, IsEmpty());
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(names, ElementsAre("a"));
}

TEST_F(NotificationReadersTest, aPostArrivesWhileTheUserTracksAMenu) {
  int deliveries = 0;
  fakes_.notificationCenter->addObserver("a", [&](const Notification& /*each*/) { ++deliveries; })
      .keep();
  fakes_.runLoop->setTracksMenu(true);
  MyPushAdUtil::postOnMainThreadNotificationName("a", nullptr, std::nullopt);
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), IsEmpty());
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(deliveries, 1);
}

TEST_F(NotificationReadersTest, aPostFromAnotherThreadArrivesOnTheMainThread) {
  std::thread::id deliveredOn;
  fakes_.notificationCenter
      ->addObserver("a",
                    [&](const Notification& /*each*/) { deliveredOn = std::this_thread::get_id(); })
      .keep();
  std::thread([] {
    MyPushAdUtil::postOnMainThreadNotificationName("a", nullptr, std::nullopt);
  }).join();
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(deliveredOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace qorix
