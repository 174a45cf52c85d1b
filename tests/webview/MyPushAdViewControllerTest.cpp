#include <gmock/gmock.h>

#include <qorix/MyPushAdBoxView.h>
#include <qorix/MyPushAdViewController.h>

#include "fakes/FakePlatform.h"
#include "fakes/FakePolicyListener.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSupportScript =
    "( (typeof(cocoa_obtain_promo_app_ids) === 'function') && "
    "(typeof(cocoa_post_promo_app_info) === 'function') ) ? 'support' : 'unimplemented';";
constexpr const char* kHideScript =
    "var ele = document.getElementById('cocoa_close_web'); if (ele) { ele.style.display='none'; }";

struct SenderDelegate : MyPushAdViewControllerDelegate {
  void pushAdViewControllerCloseButtonDidClick(
      const std::shared_ptr<MyPushAdViewController>& controller) override {
    senders.push_back(controller);
  }
  void pushAdViewControllerOpenIAPButtonDidClickWithURL(
      const std::shared_ptr<MyPushAdViewController>& controller,
      const std::optional<Url>& url) override {
    senders.push_back(controller);
    purchases.push_back(url ? url->absoluteString() : "");
  }

  std::vector<std::shared_ptr<MyPushAdViewController>> senders;
  std::vector<std::string> purchases;
};

class MyPushAdViewControllerTest : public ::testing::Test {
 protected:
  MyPushAdViewControllerTest() { installPlatform(fakes_.services()); }

  static std::shared_ptr<MyPushAdViewController> make(std::int64_t mode) {
    return MyPushAdViewController::createInstanceWithPushAdMode(mode);
  }

  std::shared_ptr<FakeWebView> webView() { return fakes_.interfaceLoader->webViews.at(0).lock(); }

  /// Finishes the load of a frame of the controller's page. Returns the scripts that this causes.
  std::vector<std::string> finishLoad(MyPushAdViewController& controller, bool isMainFrame = true) {
    controller.view();
    webView()->scripts.clear();
    controller.webViewDidFinishLoadForFrame(webView(), {isMainFrame});
    return webView()->scripts;
  }

  FakePlatform fakes_;
};

TEST_F(MyPushAdViewControllerTest, storesAnyMode) {
  for (const std::int64_t mode : {0, 1, 5, -7}) {
    EXPECT_EQ(make(mode)->pushAdMode(), mode);
  }
}

TEST_F(MyPushAdViewControllerTest, allocatesTheReceivingClassAndInitialisesItOnce) {
  struct Special : MyPushAdViewController {
    void customInit() override {
      ++inits;
      modeThen = pushAdMode();
    }
    int inits = 0;
    std::int64_t modeThen = -1;
  };
  const std::shared_ptr<Special> controller =
      MyPushAdViewController::createInstanceWithPushAdMode<Special>(7);
  EXPECT_EQ(controller->inits, 1);
  EXPECT_EQ(controller->modeThen, 0) << "the mode is set afterwards";
  EXPECT_EQ(controller->pushAdMode(), 7);
}

TEST_F(MyPushAdViewControllerTest, takesItsViewFromTheLibrarysInterfaceFileWhenFirstAsked) {
  const auto controller = make(0);
  EXPECT_THAT(fakes_.interfaceLoader->requests, IsEmpty());
  const auto view = controller->view();
  EXPECT_EQ(controller->view(), view);
  ASSERT_EQ(fakes_.interfaceLoader->requests.size(), 1U);
  EXPECT_EQ(fakes_.interfaceLoader->requests[0].name, "MyPushAdViewController");
  EXPECT_EQ(fakes_.interfaceLoader->requests[0].executableUrl,
            platform().libraryBundle->executableUrl());
  EXPECT_EQ(controller->legacyWebView(), webView());
  EXPECT_EQ(fakes_.interfaceLoader->delegates[0].lock(), controller);
}

TEST_F(MyPushAdViewControllerTest, theWebViewDrawsNoBackground) {
  for (const std::int64_t mode : {MyPushAdModePopup, MyPushAdModeBanner}) {
    const auto controller = make(mode);
    controller->view();
    EXPECT_FALSE(fakes_.interfaceLoader->webViews.back().lock()->drawsBackground) << mode;
  }
}

TEST_F(MyPushAdViewControllerTest, isHeldByNoneOfItsViews) {
  auto controller = make(1);
  controller->view();
  const std::weak_ptr<MyPushAdViewController> watch = controller;
  controller.reset();
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(webView(), nullptr) << "the view keeps the web view alive, nobody else";
}

TEST_F(MyPushAdViewControllerTest, changeViewSizeKeepsTheOrigin) {
  const auto controller = make(1);
  controller->view()->setFrame({{10, 20}, {1, 2}});
  controller->changeViewSize({300, 250});
  EXPECT_EQ(controller->view()->frame(), (Rect{{10, 20}, {300, 250}}));
}

TEST_F(MyPushAdViewControllerTest, changeViewSizeMakesTheView) {
  const auto controller = make(1);
  controller->changeViewSize({300, 250});
  EXPECT_EQ(fakes_.interfaceLoader->requests.size(), 1U);
  EXPECT_EQ(controller->view()->frame().size, (Size{300, 250}));
}

TEST_F(MyPushAdViewControllerTest, withoutAnInterfaceFileNothingHappens) {
  fakes_.interfaceLoader->isBroken = true;
  const auto controller = make(1);
  controller->changeViewSize({300, 250});
  controller->loadDataWithTitle("Title", "<p>page</p>");
  EXPECT_EQ(controller->view(), nullptr);
  EXPECT_EQ(controller->legacyWebView(), nullptr);
  EXPECT_EQ(controller->title(), "Title");
}

TEST_F(MyPushAdViewControllerTest, titleAndPageActEachOnItsOwn) {
  const auto controller = make(1);
  controller->view();
  controller->loadDataWithTitle("First", std::nullopt);
  EXPECT_EQ(controller->title(), "First");
  EXPECT_THAT(webView()->loads, IsEmpty());
  controller->loadDataWithTitle(std::nullopt, "<p>page</p>");
  EXPECT_EQ(controller->title(), "First");
  ASSERT_EQ(webView()->loads.size(), 1U);
  EXPECT_EQ(webView()->loads[0].html, "<p>page</p>");
}

TEST_F(MyPushAdViewControllerTest, anEmptyTitleAndAnEmptyPageAreUsed) {
  const auto controller = make(1);
  controller->view();
  controller->loadDataWithTitle("First", "<p>page</p>");
  controller->loadDataWithTitle("", "");
  EXPECT_EQ(controller->title(), "");
  ASSERT_EQ(webView()->loads.size(), 2U);
  EXPECT_EQ(webView()->loads[1].html, "");
}

TEST_F(MyPushAdViewControllerTest, thePagesBaseIsTheLibrarysOwnFile) {
  const auto controller = make(1);
  controller->view();
  controller->loadDataWithTitle(std::nullopt, "<p>page</p>");
  EXPECT_EQ(webView()->loads[0].baseUrl.absoluteString(), "file:///opt/editor/lib/libqorix.so");
}

TEST_F(MyPushAdViewControllerTest, reportsClicksToItsDelegate) {
  const auto delegate = std::make_shared<SenderDelegate>();
  const auto controller = make(1);
  controller->setDelegate(delegate);
  controller->handleCloseButtonClicked();
  controller->handleOpenIAPButtonClickedWithURL(Url::parse("https://example.com/?zamopeniap=1"));
  controller->handleOpenIAPButtonClickedWithURL(std::nullopt);
  EXPECT_THAT(delegate->senders, ElementsAre(controller, controller, controller));
  EXPECT_THAT(delegate->purchases, ElementsAre("https://example.com/?zamopeniap=1", ""));
}

TEST_F(MyPushAdViewControllerTest, clicksWithoutADelegateOrItsMethodsDoNothing) {
  const auto controller = make(1);
  controller->handleCloseButtonClicked();
  controller->handleOpenIAPButtonClickedWithURL(std::nullopt);
  const auto mute = std::make_shared<MyPushAdViewControllerDelegate>();
  controller->setDelegate(mute);
  controller->handleCloseButtonClicked();
  controller->handleOpenIAPButtonClickedWithURL(std::nullopt);
  auto gone = std::make_shared<SenderDelegate>();
  controller->setDelegate(gone);
  gone.reset();
  controller->handleCloseButtonClicked();
  EXPECT_EQ(controller->delegate(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdViewControllerTest, inPopupModeALoadRunsTheFilterAndThenHidesTheCloseControl) {
  EXPECT_THAT(finishLoad(*make(MyPushAdModePopup)), ElementsAre(kSupportScript, kHideScript));
}

TEST_F(MyPushAdViewControllerTest, inBannerModeTheCloseControlStays) {
  EXPECT_THAT(finishLoad(*make(MyPushAdModeBanner)), ElementsAre(kSupportScript));
}

TEST_F(MyPushAdViewControllerTest, everyModeButPopupBehavesAsABanner) {
  EXPECT_THAT(finishLoad(*make(5)), ElementsAre(kSupportScript));
}

TEST_F(MyPushAdViewControllerTest, aSubFrameIsWorkedOnLikeTheMainFrame) {
  const auto controller = make(MyPushAdModePopup);
  EXPECT_THAT(finishLoad(*controller, false), ElementsAre(kSupportScript, kHideScript));
  EXPECT_THAT(finishLoad(*controller, false), ElementsAre(kSupportScript, kHideScript));
  EXPECT_THAT(finishLoad(*controller, true), ElementsAre(kSupportScript, kHideScript));
}

TEST_F(MyPushAdViewControllerTest, aLoadInAnotherWebViewIsIgnored) {
  const auto controller = make(MyPushAdModePopup);
  controller->view();
  const auto foreign = std::make_shared<FakeWebView>();
  controller->webViewDidFinishLoadForFrame(foreign, {});
  EXPECT_THAT(foreign->scripts, IsEmpty());
  EXPECT_THAT(webView()->scripts, IsEmpty());
}

TEST_F(MyPushAdViewControllerTest, aLoadAfterTheWebViewIsGoneIsIgnored) {
  const auto controller = make(MyPushAdModePopup);
  controller->webViewDidFinishLoadForFrame(nullptr, {});
  const auto foreign = std::make_shared<FakeWebView>();
  controller->webViewDidFinishLoadForFrame(foreign, {});
  EXPECT_THAT(foreign->scripts, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdViewControllerTest, survivesAHostThatDropsItWhileAScriptRuns) {
  auto controller = make(MyPushAdModePopup);
  controller->view();
  const auto page = webView();
  const std::weak_ptr<MyPushAdViewController> watch = controller;
  page->page = [&](const std::string& /*script*/) {
    controller.reset();
    return std::string();
  };
  controller->webViewDidFinishLoadForFrame(page, {});
  EXPECT_THAT(page->scripts, ElementsAre(kSupportScript, kHideScript));
  EXPECT_TRUE(watch.expired());
}

TEST_F(MyPushAdViewControllerTest, theRootOfTheInterfaceIsFoundByItsTag) {
  EXPECT_EQ(make(0)->view()->tag(), 27921);
  EXPECT_EQ(FakeView().tag(), -1);
}

TEST_F(MyPushAdViewControllerTest, aWindowMadeForTheControllerFollowsItsTitle) {
  const auto controller = make(0);
  controller->setTitle("Before");
  const auto window = windowWithContentViewController(controller);
  EXPECT_EQ(fakes_.windows->windows[0]->title, "Before");
  controller->loadDataWithTitle("After", std::nullopt);
  EXPECT_EQ(fakes_.windows->windows[0]->title, "After");
  EXPECT_EQ(window->contentView(), controller->view());
}

TEST_F(MyPushAdViewControllerTest, aWindowKeepsItsControllerAlive) {
  auto controller = make(0);
  const auto window = windowWithContentViewController(controller);
  const std::weak_ptr<MyPushAdViewController> watch = controller;
  controller.reset();
  EXPECT_FALSE(watch.expired());
}

/// Counts its initialisations.
struct InitialisedController : MyPushAdViewController {
  void customInit() override { ++inits; }
  int inits = 0;
};

TEST_F(MyPushAdViewControllerTest, anArchivedControllerIsInitialisedLikeAnother) {
  const auto controller = std::make_shared<InitialisedController>();
  EXPECT_TRUE(controller->initWithCoder(
      {{kViewControllerNibNameKey, "Other"}, {kViewControllerTitleKey, "Archived"}}));
  EXPECT_EQ(controller->inits, 1);
  EXPECT_EQ(controller->title(), "Archived");
  controller->view();
  EXPECT_EQ(fakes_.interfaceLoader->requests.at(0).name, "Other");
  EXPECT_EQ(fakes_.interfaceLoader->requests.at(0).executableUrl,
            platform().libraryBundle->executableUrl());
}

TEST_F(MyPushAdViewControllerTest, anEmptyArchiveIsTheLibrarysOwnController) {
  const auto controller = std::make_shared<InitialisedController>();
  EXPECT_TRUE(controller->initWithCoder(
      {{kViewControllerNibNameKey, 5}, {kViewControllerTitleKey, Value()}}));
  EXPECT_EQ(controller->inits, 1);
  EXPECT_EQ(controller->title(), std::nullopt);
  ASSERT_NE(controller->view(), nullptr);
  EXPECT_EQ(fakes_.interfaceLoader->requests.at(0).name, "MyPushAdViewController");
}

TEST_F(MyPushAdViewControllerTest, aControllerThatCannotBeInitialisedIsNone) {
  struct Impossible : InitialisedController {
    bool initWithNibName(const std::optional<std::string>& /*nibName*/,
                         const std::shared_ptr<const Bundle>& /*bundle*/) override {
      return false;
    }
  };
  EXPECT_EQ(MyPushAdViewController::createInstanceWithPushAdMode<Impossible>(1), nullptr);
}

TEST_F(MyPushAdViewControllerTest, aControllerMadeWithoutItsFactoryWorks) {
  const auto controller = std::make_shared<MyPushAdViewController>();
  EXPECT_EQ(controller->pushAdMode(), MyPushAdModePopup);
  controller->changeViewSize({300, 250});
  controller->loadDataWithTitle("Title", "<p>page</p>");
  EXPECT_EQ(controller->view()->frame().size, (Size{300, 250}));
  EXPECT_EQ(fakes_.interfaceLoader->requests.at(0).name, "MyPushAdViewController");
  ASSERT_EQ(webView()->loads.size(), 1U);
  EXPECT_EQ(webView()->loads[0].baseUrl, platform().libraryBundle->executableUrl());
  EXPECT_THAT(finishLoad(*controller), ElementsAre(kSupportScript, kHideScript));
}

TEST_F(MyPushAdViewControllerTest, aControllerThatNobodySharesThrowsNothing) {
  const auto delegate = std::make_shared<SenderDelegate>();
  MyPushAdViewController controller;
  controller.setDelegate(delegate);
  controller.view();
  controller.loadDataWithTitle("Title", "<p>page</p>");
  controller.webViewDidFinishLoadForFrame(webView(), {});
  controller.handleCloseButtonClicked();
  controller.handleOpenIAPButtonClickedWithURL(Url::parse("https://example.com/"));
  controller.handleUserIsTriggeringNavigation(std::make_shared<DomHtmlElement>("a", "b"));
  FakePolicyListener listener;
  controller.webViewDecidePolicyForNavigationAction(
      webView(),
      {{kWebActionElementKey,
        Dictionary{{kWebElementDomNodeKey,
                    std::shared_ptr<DomNode>(std::make_shared<DomHtmlElement>("a", "b"))}}}},
      *Url::parse("https://example.com/"), {}, listener);
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate->senders, ElementsAre(nullptr, nullptr));
}

/// Replaces what a subclass may, and keeps the names of what is called.
struct ReplacingController : MyPushAdViewController {
  void customInit() override { called.emplace_back("customInit"); }
  void viewDidLoad() override { called.emplace_back("viewDidLoad"); }
  std::shared_ptr<WebView> legacyWebView() const override { return ownWebView; }
  bool isSupportAdFilterFeature(const std::shared_ptr<WebView>& /*webView*/) override {
    called.emplace_back("isSupportAdFilterFeature");
    return true;
  }
  void processAdFilterFeatureIfNeeded(const std::shared_ptr<WebView>& webView) override {
    called.emplace_back("processAdFilterFeatureIfNeeded");
    MyPushAdViewController::processAdFilterFeatureIfNeeded(webView);
  }
  bool isCapableForMacAppStore(const Url& /*url*/) override {
    called.emplace_back("isCapableForMacAppStore");
    return false;
  }
  bool isCapableForOpenInBrowser(const Url& /*url*/, const Dictionary& /*action*/) override {
    called.emplace_back("isCapableForOpenInBrowser");
    return false;
  }
  bool isCapableForOpenIAP(const Url& /*url*/, const Dictionary& /*action*/) override {
    called.emplace_back("isCapableForOpenIAP");
    return isForPurchase;
  }
  bool isCloseButtonActionForNavigationAction(const Dictionary& /*action*/) override {
    called.emplace_back("isCloseButtonActionForNavigationAction");
    return true;
  }
  std::shared_ptr<DomHtmlElement> findActionHTMLElementForNavigationAction(
      const Dictionary& /*action*/) override {
    called.emplace_back("findActionHTMLElementForNavigationAction");
    return std::make_shared<DomHtmlElement>("replaced", "");
  }
  void handleUserIsTriggeringNavigation(const std::shared_ptr<Object>& element) override {
    called.push_back("handleUserIsTriggeringNavigation " +
                     *std::dynamic_pointer_cast<DomHtmlElement>(element)->idName());
  }
  void handleCloseButtonClicked() override { called.emplace_back("handleCloseButtonClicked"); }
  void handleOpenIAPButtonClickedWithURL(const std::optional<Url>& /*url*/) override {
    called.emplace_back("handleOpenIAPButtonClickedWithURL");
  }
  void changeViewSize(const Size& /*size*/) override { called.emplace_back("changeViewSize"); }
  void loadDataWithTitle(const std::optional<std::string>& /*title*/,
                         const std::optional<std::string>& /*html*/) override {
    called.emplace_back("loadDataWithTitle");
  }

  std::vector<std::string> called;
  bool isForPurchase = true;
  std::shared_ptr<FakeWebView> ownWebView = std::make_shared<FakeWebView>();
};

TEST_F(MyPushAdViewControllerTest, aSubclassMayReplaceEveryMethod) {
  const auto controller =
      MyPushAdViewController::createInstanceWithPushAdMode<ReplacingController>(MyPushAdModeBanner);
  const std::shared_ptr<MyPushAdViewController> asOthersKnowIt = controller;
  asOthersKnowIt->changeViewSize({1, 1});
  asOthersKnowIt->view();
  asOthersKnowIt->loadDataWithTitle(std::nullopt, std::nullopt);
  EXPECT_THAT(controller->called,
              ElementsAre("customInit", "changeViewSize", "viewDidLoad", "loadDataWithTitle"));
  controller->called.clear();

  asOthersKnowIt->webViewDidFinishLoadForFrame(controller->ownWebView, {});
  EXPECT_THAT(controller->called,
              ElementsAre("processAdFilterFeatureIfNeeded", "isSupportAdFilterFeature"));
  controller->called.clear();

  FakePolicyListener listener;
  const auto decide = [&] {
    asOthersKnowIt->webViewDecidePolicyForNavigationAction(
        controller->ownWebView, {}, *Url::parse("https://example.com/"), {}, listener);
    fakes_.runLoop->runUntilIdle();
  };
  decide();
  EXPECT_THAT(controller->called,
              ElementsAre("findActionHTMLElementForNavigationAction", "isCapableForMacAppStore",
                          "isCapableForOpenInBrowser", "isCapableForOpenIAP",
                          "handleOpenIAPButtonClickedWithURL",
                          "handleUserIsTriggeringNavigation replaced"));
  controller->called.clear();
  controller->isForPurchase = false;
  decide();
  EXPECT_THAT(controller->called,
              ElementsAre("findActionHTMLElementForNavigationAction", "isCapableForMacAppStore",
                          "isCapableForOpenInBrowser", "isCapableForOpenIAP",
                          "isCloseButtonActionForNavigationAction", "handleCloseButtonClicked",
                          "handleUserIsTriggeringNavigation replaced"));
}

}  // namespace
}  // namespace qorix
