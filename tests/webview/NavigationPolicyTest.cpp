#include <gmock/gmock.h>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdViewController.h>

#include "fakes/FakePlatform.h"
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

struct RecordingWorkspace : Workspace {
  void openUrl(const Url& url) override { opened.push_back(url.absoluteString()); }
  std::vector<std::string> opened;
};

struct RecordingListener : WebPolicyDecisionListener {
  void use() override { answers.emplace_back("use"); }
  void ignore() override { answers.emplace_back("ignore"); }
  std::vector<std::string> answers;
};

struct ReportingDelegate : MyPushAdViewControllerDelegate {
  void pushAdViewControllerCloseButtonDidClick(
      const std::shared_ptr<MyPushAdViewController>& /*controller*/) override {
    reports.emplace_back("close");
  }
  void pushAdViewControllerOpenIAPButtonDidClickWithURL(
      const std::shared_ptr<MyPushAdViewController>& /*controller*/,
      const std::optional<Url>& url) override {
    reports.push_back("purchase " + url->absoluteString());
  }
  std::vector<std::string> reports;
};

std::shared_ptr<DomNode> element(const std::string& idName, const std::string& className) {
  return std::make_shared<DomHtmlElement>(idName, className);
}

std::shared_ptr<DomNode> textIn(std::shared_ptr<DomNode> parent) {
  return std::make_shared<DomText>(std::move(parent));
}

Dictionary click(const std::shared_ptr<DomNode>& node) {
  return {{kWebActionNavigationTypeKey, 0},
          {kWebActionElementKey, Dictionary{{kWebElementDomNodeKey, node}}}};
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

  /// The page asks to go to `url`; answers "use" or "ignore".
  std::string decide(const std::string& url, const Dictionary& actionInformation) {
    return decideIn(controller_->legacyWebView(), url, actionInformation);
  }

  std::string decideIn(const std::shared_ptr<WebView>& webView, const std::string& url,
                       const Dictionary& actionInformation) {
    RecordingListener listener;
    controller_->webViewDecidePolicyForNavigationAction(webView, actionInformation,
                                                        Url::fromWebEngine(url), {}, listener);
    EXPECT_EQ(listener.answers.size(), 1U) << "exactly one answer before returning";
    return listener.answers.at(0);
  }

  FakePlatform fakes_;
  std::shared_ptr<RecordingWorkspace> workspace_ = std::make_shared<RecordingWorkspace>();
  std::shared_ptr<ReportingDelegate> delegate_ = std::make_shared<ReportingDelegate>();
  std::shared_ptr<MyPushAdViewController> controller_;
  std::weak_ptr<MyPushAdViewController> sender_;
  std::vector<Dictionary> announced_;
};

/// Keeps what is answered, logged, opened and reported in the order in which it happens.
class NavigationOrderTest : public NavigationPolicyTest {
 protected:
  struct Witness : WebPolicyDecisionListener, Log, Workspace, MyPushAdViewControllerDelegate {
    void use() override { events.emplace_back("use"); }
    void ignore() override { events.emplace_back("ignore"); }
    void write(std::string_view /*line*/) override { events.emplace_back("log"); }
    void openUrl(const Url& /*url*/) override { events.emplace_back("open"); }
    void pushAdViewControllerCloseButtonDidClick(
        const std::shared_ptr<MyPushAdViewController>& /*controller*/) override {
      events.emplace_back("close");
    }
    void pushAdViewControllerOpenIAPButtonDidClickWithURL(
        const std::shared_ptr<MyPushAdViewController>& /*controller*/,
        const std::optional<Url>& /*url*/) override {
      events.emplace_back("purchase");
    }
    std::vector<std::string> events;
  };

  NavigationOrderTest() {
    auto services = fakes_.services();
    services.log = witness_;
    services.workspace = witness_;
    installPlatform(std::move(services));
    controller_->setDelegate(witness_);
  }

  std::vector<std::string> eventsOf(const std::string& url, const Dictionary& actionInformation) {
    witness_->events.clear();
    controller_->webViewDecidePolicyForNavigationAction(
        controller_->legacyWebView(), actionInformation, Url::fromWebEngine(url), {}, *witness_);
    return witness_->events;
  }

  std::shared_ptr<Witness> witness_ = std::make_shared<Witness>();
};

TEST_F(NavigationPolicyTest, aFormSubmissionIsLetThroughWhateverItsMarks) {
  for (const int type : {1, 2, 3, 4, 5}) {
    auto action = click(element("cocoa_close_web", "zamopeniap"));
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

TEST_F(NavigationOrderTest, theAnswerComesBeforeTheActionAndTheLogBeforeTheOpening) {
  EXPECT_THAT(eventsOf("https://example.com/?ls=1", {}), ElementsAre("ignore", "log", "open"));
  EXPECT_THAT(eventsOf("https://example.com/?zamopenout=1", {}),
              ElementsAre("ignore", "log", "open"));
  EXPECT_THAT(eventsOf("https://example.com/?zamopeniap=1", {}), ElementsAre("ignore", "purchase"));
  EXPECT_THAT(eventsOf("https://example.com/", click(element("cocoa_close_web", ""))),
              ElementsAre("ignore", "close"));
}

TEST_F(NavigationPolicyTest, anotherWebViewIsLetThroughUntouched) {
  EXPECT_EQ(decideIn(std::make_shared<FakeWebView>(), "https://example.com/?zamopeniap=1",
                     click(element("a", "b"))),
            "use");
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate_->reports, IsEmpty());
  EXPECT_THAT(announced_, IsEmpty());
}

TEST_F(NavigationPolicyTest, theAppStoreMarkIgnoresLetterCaseAndReplacesTheSchemeOnly) {
  EXPECT_EQ(decide("https://apps.example.com/app/id1?mt=12&LS=1", click(element("", ""))),
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
  EXPECT_EQ(decide("https://example.com/", click(element("", "big-zamopenouts red"))), "ignore");
  EXPECT_EQ(decide("https://example.com/", click(element("", "ZAMOPENOUT"))), "use");
  EXPECT_EQ(workspace_->opened.size(), 1U);
}

TEST_F(NavigationPolicyTest, theTextOfALinkCarriesItsClassMark) {
  EXPECT_EQ(decide("https://example.com/", click(textIn(element("", "zamopenout")))), "ignore");
  EXPECT_THAT(workspace_->opened, ElementsAre("https://example.com/"));
}

TEST_F(NavigationPolicyTest, aPurchaseIsReportedWithItsFullUrl) {
  EXPECT_EQ(decide("https://example.com/buy?id=3&ZamOpenIAP=1#now", click(element("b", ""))),
            "ignore");
  EXPECT_EQ(decide("https://example.com/buy", click(textIn(element("", "zamopeniap")))), "ignore");
  EXPECT_THAT(delegate_->reports,
              ElementsAre("purchase https://example.com/buy?id=3&ZamOpenIAP=1#now",
                          "purchase https://example.com/buy"));
  EXPECT_THAT(workspace_->opened, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(NavigationPolicyTest, theFirstActionThatHoldsWins) {
  decide("https://example.com/?ls=1&zamopenout=1&zamopeniap=1",
         click(element("cocoa_close_web", "")));
  EXPECT_THAT(delegate_->reports, IsEmpty());
  decide("https://example.com/?zamopenout=1&zamopeniap=1", click(element("cocoa_close_web", "")));
  EXPECT_THAT(delegate_->reports, IsEmpty());
  EXPECT_EQ(workspace_->opened.size(), 2U);
  decide("https://example.com/?zamopeniap=1", click(element("cocoa_close_web", "")));
  EXPECT_THAT(delegate_->reports, ElementsAre("purchase https://example.com/?zamopeniap=1"));
  decide("https://example.com/", click(element("cocoa_close_web", "zamopenout")));
  EXPECT_EQ(workspace_->opened.size(), 3U);
  EXPECT_EQ(delegate_->reports.size(), 1U);
}

TEST_F(NavigationPolicyTest, theCloseControlClosesOnlyWhenItIsHitItself) {
  EXPECT_EQ(decide("https://example.com/", click(element("cocoa_close_web", ""))), "ignore");
  EXPECT_THAT(delegate_->reports, ElementsAre("close"));
  EXPECT_EQ(decide("https://example.com/", click(textIn(element("cocoa_close_web", "")))), "use");
  EXPECT_EQ(decide("https://example.com/", click(element("Cocoa_close_web", ""))), "use");
  EXPECT_EQ(decide("https://example.com/", click(element("cocoa_close_web2", ""))), "use");
  EXPECT_EQ(delegate_->reports.size(), 1U);
}

TEST_F(NavigationPolicyTest, aLinkWithoutMarksIsFollowed) {
  EXPECT_EQ(decide("https://example.com/more", click(element("x", "y"))), "use");
  EXPECT_EQ(decide("https://example.com/zamopenout=1", {}), "use") << "only the query counts";
  EXPECT_EQ(decide("https://example.com/#?ls=1", {}), "use") << "a fragment is no query";
}

TEST_F(NavigationPolicyTest, everyLinkClickIsAnnouncedOnceAfterTheDecision) {
  decide("https://example.com/", click(element("buy", "cta big")));
  decide("https://example.com/?zamopenout=1", click(textIn(element("out", ""))));
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
  decide("https://example.com/", click(element("buy", "")));
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
  controller_->handleUserIsTriggeringNavigation(element("a", ""));
  fakes_.runLoop->dispatchAsync([&order] { order.emplace_back("after"); });
  EXPECT_THAT(order, IsEmpty()) << "never inside the call that posts it";
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(order, ElementsAre("before", "announced", "after"));
}

TEST_F(NavigationPolicyTest, anElementWithoutIdAndClassIsAnnouncedAlone) {
  const auto bare = element("", "");
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
  decide("https://example.com/", click(textIn(textIn(element("a", "b")))));
  controller_->handleUserIsTriggeringNavigation(nullptr);
  controller_->handleUserIsTriggeringNavigation(std::make_shared<FakeView>());
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(announced_, IsEmpty());
}

TEST_F(NavigationPolicyTest, anAnnouncementWaitsWhileAMenuIsTracked) {
  decide("https://example.com/", click(element("a", "")));
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
  EXPECT_EQ(decide("mailto:someone@example.com?subject=a", click(element("", "zamopenout"))),
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
    auto action = click(element("", "zamopenout"));
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
  Dictionary action = click(element("", ""));
  for (int i = 0; i < 20; ++i) {
    action[kWebActionIsUserActKey] = true;
    decide("https://example.com/?zamopenout=1", action);
    action.erase(kWebActionIsUserActKey);
    decide("https://example.com/?ls=1", action);
  }
  EXPECT_EQ(workspace_->opened.size(), 40U);
}

TEST_F(NavigationPolicyTest, aPageThatOpensWithoutTheUserIsStopped) {
  Dictionary action = click(element("", ""));
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
