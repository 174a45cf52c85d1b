#include <gmock/gmock.h>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdViewController.h>

#include "fakes/FakeControllerDelegate.h"
#include "fakes/FakePlatform.h"
#include "fakes/FakePolicyListener.h"
#include "fakes/FakeWorkspace.h"
#include "support/Clicks.h"
#include "webview/LinkMarks.h"
#include "webview/OpeningLimit.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string openingLog(int line, const std::string& url) {
  return "-[MyPushAdViewController "
         "webView:decidePolicyForNavigationAction:request:frame:decisionListener:] " +
         std::to_string(line) + ": ZAM <=> Opening URL:[" + url + "]";
}

class NavigationPolicyTest : public ::testing::Test {
 protected:
  NavigationPolicyTest() {
    auto services = fakes_.services();
    services.workspace = workspace_;
    installPlatform(std::move(services));
    fakes_.notificationCenter
        ->addObserver(kPushAdIsTriggeringNavigationNotification,
                      [this](const Notification& each) {
                        announced_.push_back(*each.userInfo());
                        EXPECT_EQ(each.object(), sender_.lock());
                      })
        .keep();
    controller_ = MyPushAdViewController::createInstanceWithPushAdMode(MyPushAdModeBanner);
    sender_ = controller_;
    controller_->setDelegate(delegate_);
    controller_->view();
  }

  /// The page asks to go to `url`. Returns the decision, "use" or "ignore".
  std::string decide(const std::string& url, const Dictionary& actionInformation) {
    return decideIn(controller_->legacyWebView(), url, actionInformation);
  }

  std::string decideIn(const std::shared_ptr<WebView>& webView, const std::string& url,
                       const Dictionary& actionInformation) {
    FakePolicyListener listener;
    controller_->webViewDecidePolicyForNavigationAction(webView, actionInformation,
                                                        Url::fromWebEngine(url), {}, listener);
    EXPECT_EQ(listener.decisions.size(), 1U) << "exactly one answer before returning";
    return listener.decisions.at(0);
  }

  FakePlatform fakes_;
  std::shared_ptr<FakeWorkspace> workspace_ = std::make_shared<FakeWorkspace>();
  std::shared_ptr<FakeControllerDelegate> delegate_ = std::make_shared<FakeControllerDelegate>();
  std::shared_ptr<MyPushAdViewController> controller_;
  std::weak_ptr<MyPushAdViewController> sender_;
  std::vector<Dictionary> announced_;
};

TEST_F(NavigationPolicyTest, aFormSubmissionIsLetThroughWhateverItsMarks) {
  for (const int type : {1, 2, 3, 4, 5}) {
    auto action = click(htmlElement("cocoa_close_web", "zamopeniap"));
    action[kWebActionNavigationTypeKey] = type;
    EXPECT_EQ(decide("https://example.com/?zamopeniap=1&ls=1", action), "use") << type;
  }
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate_->reports, IsEmpty());
  EXPECT_THAT(announced_, IsEmpty());
}

TEST_F(NavigationPolicyTest, aMissingOrForeignTypeIsALinkClick) {
  EXPECT_EQ(decide("https://example.com/?zamopeniap=1", {}), "ignore");
  EXPECT_EQ(decide("https://example.com/?zamopeniap=1", {{kWebActionNavigationTypeKey, "1"}}),
            "ignore");
  EXPECT_EQ(delegate_->reports.size(), 2U);
}

TEST_F(NavigationPolicyTest, aTypeIsReadAsAnIntegerWhateverNumberItIs) {
  EXPECT_EQ(decide("https://example.com/?zamopeniap=1", {{kWebActionNavigationTypeKey, 0.9}}),
            "ignore");
  EXPECT_EQ(decide("https://example.com/?zamopeniap=1", {{kWebActionNavigationTypeKey, false}}),
            "ignore");
  EXPECT_EQ(delegate_->reports.size(), 2U);
  for (const Value& type : {Value(1.5), Value(-1), Value(true), Value(6)}) {
    EXPECT_EQ(decide("https://example.com/?zamopeniap=1", {{kWebActionNavigationTypeKey, type}}),
              "use");
  }
  EXPECT_EQ(delegate_->reports.size(), 2U);
}

TEST_F(NavigationPolicyTest, anotherWebViewIsLetThroughUntouched) {
  EXPECT_EQ(decideIn(std::make_shared<FakeWebView>(), "https://example.com/?zamopeniap=1",
                     click(htmlElement("a", "b"))),
            "use");
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate_->reports, IsEmpty());
  EXPECT_THAT(announced_, IsEmpty());
}

TEST_F(NavigationPolicyTest, theAppStoreMarkIgnoresLetterCaseAndReplacesTheSchemeOnly) {
  EXPECT_EQ(decide("https://apps.example.com/app/id1?mt=12&LS=1", click(htmlElement("", ""))),
            "ignore");
  EXPECT_THAT(workspace_->opened, ElementsAre("macappstore://apps.example.com/app/id1?mt=12&LS=1"));
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(openingLog(353, "macappstore://apps.example.com/app/id1?mt=12&LS=1")));
}

TEST_F(NavigationPolicyTest, theAppStoreMarkIsAlsoFoundInsideAParameter) {
  EXPECT_EQ(decide("https://example.com/?tools=12", {}), "ignore");
  EXPECT_EQ(workspace_->opened.size(), 1U);
}

TEST_F(NavigationPolicyTest, onlyWhatFollowsTheLastSchemeSeparatorIsKept) {
  decide("https://example.com/?ls=1&u=https://other.example.com/x", {});
  EXPECT_THAT(workspace_->opened, ElementsAre("macappstore://other.example.com/x"));
}

TEST_F(NavigationPolicyTest, anAppStoreAddressThatIsNoUrlIsLoggedAsNullAndNotOpened) {
  EXPECT_EQ(decide("https://example.com/?ls=1&x=a|b", {}), "ignore");
  EXPECT_THAT(workspace_->opened, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(openingLog(353, "(null)")));
}

TEST_F(NavigationPolicyTest, theBrowserMarkInTheQueryIgnoresLetterCase) {
  EXPECT_EQ(decide("https://example.com/?ZAMOPENOUT=1#top", {}), "ignore");
  EXPECT_THAT(workspace_->opened, ElementsAre("https://example.com/?ZAMOPENOUT=1#top"));
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(openingLog(361, "https://example.com/?ZAMOPENOUT=1#top")));
}

TEST_F(NavigationPolicyTest, theBrowserMarkInTheClassKeepsLetterCase) {
  EXPECT_EQ(decide("https://example.com/", click(htmlElement("", "big-zamopenouts red"))),
            "ignore");
  EXPECT_EQ(decide("https://example.com/", click(htmlElement("", "ZAMOPENOUT"))), "use");
  EXPECT_EQ(workspace_->opened.size(), 1U);
}

TEST_F(NavigationPolicyTest, theTextOfALinkCarriesItsClassMark) {
  EXPECT_EQ(decide("https://example.com/", click(textIn(htmlElement("", "zamopenout")))), "ignore");
  EXPECT_THAT(workspace_->opened, ElementsAre("https://example.com/"));
}

TEST_F(NavigationPolicyTest, aPurchaseIsReportedWithItsFullUrl) {
  EXPECT_EQ(decide("https://example.com/buy?id=3&ZamOpenIAP=1#now", click(htmlElement("b", ""))),
            "ignore");
  EXPECT_EQ(decide("https://example.com/buy", click(textIn(htmlElement("", "zamopeniap")))),
            "ignore");
  EXPECT_THAT(delegate_->reports,
              ElementsAre("purchase https://example.com/buy?id=3&ZamOpenIAP=1#now",
                          "purchase https://example.com/buy"));
  EXPECT_THAT(workspace_->opened, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(NavigationPolicyTest, theFirstActionThatHoldsWins) {
  decide("https://example.com/?ls=1&zamopenout=1&zamopeniap=1",
         click(htmlElement("cocoa_close_web", "")));
  EXPECT_THAT(delegate_->reports, IsEmpty());
  decide("https://example.com/?zamopenout=1&zamopeniap=1",
         click(htmlElement("cocoa_close_web", "")));
  EXPECT_THAT(delegate_->reports, IsEmpty());
  EXPECT_EQ(workspace_->opened.size(), 2U);
  decide("https://example.com/?zamopeniap=1", click(htmlElement("cocoa_close_web", "")));
  EXPECT_THAT(delegate_->reports, ElementsAre("purchase https://example.com/?zamopeniap=1"));
  decide("https://example.com/", click(htmlElement("cocoa_close_web", "zamopenout")));
  EXPECT_EQ(workspace_->opened.size(), 3U);
  EXPECT_EQ(delegate_->reports.size(), 1U);
}

TEST_F(NavigationPolicyTest, theCloseControlClosesOnlyWhenItIsHitItself) {
  EXPECT_EQ(decide("https://example.com/", click(htmlElement("cocoa_close_web", ""))), "ignore");
  EXPECT_THAT(delegate_->reports, ElementsAre("close"));
  EXPECT_EQ(decide("https://example.com/", click(textIn(htmlElement("cocoa_close_web", "")))),
            "use");
  EXPECT_EQ(decide("https://example.com/", click(htmlElement("Cocoa_close_web", ""))), "use");
  EXPECT_EQ(decide("https://example.com/", click(htmlElement("cocoa_close_web2", ""))), "use");
  EXPECT_EQ(delegate_->reports.size(), 1U);
}

TEST_F(NavigationPolicyTest, aLinkWithoutMarksIsFollowed) {
  EXPECT_EQ(decide("https://example.com/more", click(htmlElement("x", "y"))), "use");
  EXPECT_EQ(decide("https://example.com/zamopenout=1", {}), "use") << "only the query counts";
  EXPECT_EQ(decide("https://example.com/#?ls=1", {}), "use") << "a fragment is no query";
}

TEST_F(NavigationPolicyTest, everyLinkClickIsAnnouncedOnceAfterTheDecision) {
  decide("https://example.com/", click(htmlElement("buy", "cta big")));
  decide("https://example.com/?zamopenout=1", click(textIn(htmlElement("out", ""))));
  EXPECT_THAT(announced_, IsEmpty());
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), ElementsAre(0, 0));
  fakes_.runLoop->runUntilIdle();
  ASSERT_EQ(announced_.size(), 2U);
  EXPECT_EQ(*announced_[0].at(kPushAdActionHTMLElementIdNameKey).as<std::string>(), "buy");
  EXPECT_EQ(*announced_[0].at(kPushAdActionHTMLElementClassNameKey).as<std::string>(), "cta big");
  EXPECT_EQ(announced_[1].size(), 2U);
  EXPECT_EQ(*announced_[1].at(kPushAdActionHTMLElementIdNameKey).as<std::string>(), "out");
}

TEST_F(NavigationPolicyTest, anAnnouncementHoldsControllerAndElement) {
  decide("https://example.com/", click(htmlElement("buy", "")));
  controller_.reset();
  fakes_.runLoop->runUntilIdle();
  ASSERT_EQ(announced_.size(), 1U);
  const auto held = announced_[0].at(kPushAdActionHTMLElementKey).object<DomHtmlElement>();
  ASSERT_NE(held, nullptr);
  EXPECT_EQ(held->idName(), "buy");
  announced_.clear();
  fakes_.runLoop->runUntilIdle();
  EXPECT_TRUE(sender_.expired()) << "and nothing longer than the announcement";
}

TEST_F(NavigationPolicyTest, anAnnouncementReadsTheElementWhenItIsMade) {
  const auto changing = std::make_shared<DomHtmlElement>("before", "zamopenout");
  EXPECT_EQ(decide("https://example.com/", click(changing)), "ignore");
  changing->renew("after", "");
  fakes_.runLoop->runUntilIdle();
  ASSERT_EQ(announced_.size(), 1U);
  EXPECT_EQ(announced_[0].size(), 2U);
  EXPECT_EQ(*announced_[0].at(kPushAdActionHTMLElementIdNameKey).as<std::string>(), "after");
}

TEST_F(NavigationPolicyTest, anAnnouncementIsPostedThroughTheMainQueue) {
  std::vector<std::string> order;
  fakes_.notificationCenter
      ->addObserver(kPushAdIsTriggeringNavigationNotification,
                    [&order](const Notification&) { order.emplace_back("announced"); })
      .keep();
  fakes_.runLoop->setTracksMenu(true);  // delayed performs wait, the queue does not
  fakes_.runLoop->dispatchAsync([&order] { order.emplace_back("before"); });
  controller_->handleUserIsTriggeringNavigation(htmlElement("a", ""));
  fakes_.runLoop->dispatchAsync([&order] { order.emplace_back("after"); });
  EXPECT_THAT(order, IsEmpty()) << "never inside the call that posts it";
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(order, ElementsAre("before", "announced", "after"));
}

TEST_F(NavigationPolicyTest, anElementWithoutIdAndClassIsAnnouncedAlone) {
  const auto bare = htmlElement("", "");
  decide("https://example.com/", click(bare));
  decide("https://example.com/",
         click(std::make_shared<DomHtmlElement>(std::nullopt, std::nullopt)));
  fakes_.runLoop->runUntilIdle();
  ASSERT_EQ(announced_.size(), 2U);
  EXPECT_EQ(announced_[0].size(), 1U);
  EXPECT_EQ(announced_[0].at(kPushAdActionHTMLElementKey).object<DomNode>(), bare);
  EXPECT_EQ(announced_[1].size(), 1U);
}

TEST_F(NavigationPolicyTest, whatIsNoElementIsNotAnnounced) {
  struct OtherNode : DomNode {};
  decide("https://example.com/", {});
  decide("https://example.com/", {{kWebActionElementKey, "text"}});
  decide("https://example.com/", {{kWebActionElementKey, Dictionary{}}});
  decide("https://example.com/",
         {{kWebActionElementKey, Dictionary{{kWebElementDomNodeKey, "node"}}}});
  decide("https://example.com/", click(std::make_shared<OtherNode>()));
  decide("https://example.com/", click(textIn(nullptr)));
  decide("https://example.com/", click(textIn(textIn(htmlElement("a", "b")))));
  controller_->handleUserIsTriggeringNavigation(nullptr);
  controller_->handleUserIsTriggeringNavigation(std::make_shared<FakeView>());
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(announced_, IsEmpty());
}

TEST_F(NavigationPolicyTest, anAnnouncementWaitsWhileAMenuIsTracked) {
  decide("https://example.com/", click(htmlElement("a", "")));
  fakes_.runLoop->setTracksMenu(true);
  fakes_.runLoop->advance(5);
  EXPECT_THAT(announced_, IsEmpty());
  fakes_.runLoop->setTracksMenu(false);
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(announced_.size(), 1U);
}

TEST_F(NavigationPolicyTest, anAddressWithoutAPathHasNoMarksInItsQuery) {
  EXPECT_EQ(decide("mailto:someone@example.com?subject=ls=1&zamopenout=1&zamopeniap=1", {}), "use");
  EXPECT_EQ(decide("about:blank?zamopeniap=1", {}), "use");
  EXPECT_EQ(decide("mailto:someone@example.com?subject=a", click(htmlElement("", "zamopenout"))),
            "ignore")
      << "the class counts as ever";
  EXPECT_THAT(workspace_->opened, ElementsAre("mailto:someone@example.com?subject=a"));
}

TEST_F(NavigationPolicyTest, whatHandsOverFilesOrRunsSomethingIsNotOpened) {
  for (const char* address :
       {"file:///etc/passwd?zamopenout=1", "FILE:///etc/passwd?zamopenout=1"}) {
    EXPECT_EQ(decide(address, {}), "ignore") << address;
  }
  for (const char* address : {"data:text/html,hello", "javascript:alert(1)"}) {
    auto action = click(htmlElement("", "zamopenout"));
    action[kWebActionIsUserActKey] = true;
    EXPECT_EQ(decide(address, action), "ignore") << address;
  }
  EXPECT_THAT(workspace_->opened, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre("ZAM Ad page may not open addresses of the scheme file",
                          "ZAM Ad page may not open addresses of the scheme FILE",
                          "ZAM Ad page may not open addresses of the scheme data",
                          "ZAM Ad page may not open addresses of the scheme javascript"));
}

TEST_F(NavigationPolicyTest, theUserOpensAsMuchAsTheUserWants) {
  Dictionary action = click(htmlElement("", ""));
  for (int i = 0; i < 20; ++i) {
    action[kWebActionIsUserActKey] = true;
    decide("https://example.com/?zamopenout=1", action);
    action.erase(kWebActionIsUserActKey);
    decide("https://example.com/?ls=1", action);
  }
  EXPECT_EQ(workspace_->opened.size(), 40U);
}

TEST_F(NavigationPolicyTest, aPageThatOpensWithoutTheUserIsStopped) {
  Dictionary action = click(htmlElement("", ""));
  action[kWebActionIsUserActKey] = false;
  EXPECT_EQ(decide("https://example.com/?ls=1", action), "ignore");
  EXPECT_EQ(workspace_->opened.size(), 1U) << "a single click by script is let do so";
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(decide("https://example.com/?zamopenout=1", action), "ignore");
  }
  EXPECT_LE(workspace_->opened.size(), OpeningLimit::kPerPage);
  const std::size_t opened = workspace_->opened.size();
  const auto lines = fakes_.log->takeLines();
  EXPECT_EQ(lines.size(), opened + 1);
  EXPECT_THAT(lines, ::testing::Contains("ZAM Ad page opens too many addresses without the user"));
  EXPECT_EQ(decide("https://example.com/?zamopeniap=1", action), "ignore");
  EXPECT_EQ(delegate_->reports.size(), 1U) << "nothing is opened for a purchase";
  action[kWebActionIsUserActKey] = true;
  decide("https://example.com/?zamopenout=1", action);
  EXPECT_EQ(workspace_->opened.size(), opened + 1) << "the user still opens";
}

TEST_F(NavigationPolicyTest, aNewPageMayOpenAnew) {
  Dictionary action;
  action[kWebActionIsUserActKey] = false;
  for (int i = 0; i < 10; ++i) {
    decide("https://example.com/?ls=1", action);
  }
  const std::size_t before = workspace_->opened.size();
  controller_->loadDataWithTitle("only a title", std::nullopt);
  decide("https://example.com/?ls=1", action);
  EXPECT_EQ(workspace_->opened.size(), before);
  controller_->loadDataWithTitle(std::nullopt, "<p>new</p>");
  decide("https://example.com/?ls=1", action);
  EXPECT_EQ(workspace_->opened.size(), before + 1);
}

}  // namespace
}  // namespace qorix
