#include <gmock/gmock.h>

#include <chrono>
#include <utility>

#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdViewController.h>

#include "fakes/FakePlatform.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* kListScript = "cocoa_obtain_promo_app_ids();";

/// The registry of a machine with some applications.
struct ScriptedRegistry : ApplicationRegistry {
  std::vector<Url> applicationUrlsForBundleIdentifier(const std::string& identifier) override {
    asked.push_back(identifier);
    return identifier == "com.a.one" ? std::vector<Url>{Url::fileUrl("/usr/bin/one")}
                                     : std::vector<Url>();
  }
  std::vector<std::string> asked;
};

std::vector<std::string> textsOf(const Array& array) {
  std::vector<std::string> texts;
  for (const Value& each : array) {
    texts.push_back(*each.as<std::string>());
  }
  return texts;
}

class AdFilterFeatureTest : public ::testing::Test {
 protected:
  AdFilterFeatureTest() {
    auto services = fakes_.services();
    services.applicationRegistry = registry_;
    installPlatform(std::move(services));
    MyPushAdManager::sharedPushAdManager()->setAppBundleIdentifier("com.host.app");
  }

  /// A page with both functions, whose list function returns `list`.
  static std::shared_ptr<FakeWebView> pageListing(const std::string& list) {
    auto webView = std::make_shared<FakeWebView>();
    webView->page = [list](const std::string& script) {
      if (script == kListScript) {
        return list;
      }
      return std::string(script.starts_with("( (typeof") ? "support" : "");
    };
    return webView;
  }

  /// The last call to the page.
  std::string answerTo(const std::string& list) {
    const auto webView = pageListing(list);
    controller_->processAdFilterFeatureIfNeeded(webView);
    EXPECT_THAT(webView->scripts, SizeIs(3));
    return webView->scripts.back();
  }

  FakePlatform fakes_;
  std::shared_ptr<ScriptedRegistry> registry_ = std::make_shared<ScriptedRegistry>();
  std::shared_ptr<MyPushAdViewController> controller_ =
      MyPushAdViewController::createInstanceWithPushAdMode(MyPushAdModeBanner);
};

TEST_F(AdFilterFeatureTest, thePageLearnsTheHostAndWhatIsInstalled) {
  EXPECT_EQ(answerTo("com.a.one, com.b.two"),
            "cocoa_post_promo_app_info('com.host.app', ['com.a.one', 'com.b.two'], ['1', '0']);");
  EXPECT_THAT(registry_->asked, ElementsAre("com.a.one", "com.b.two"));
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(AdFilterFeatureTest, aPageWithoutBothFunctionsIsLeftAlone) {
  for (const char* answer : {"unimplemented", "", "Support", "support "}) {
    const auto webView = std::make_shared<FakeWebView>();
    webView->page = [answer](const std::string& /*script*/) { return std::string(answer); };
    EXPECT_FALSE(controller_->isSupportAdFilterFeature(webView));
    webView->scripts.clear();
    controller_->processAdFilterFeatureIfNeeded(webView);
    EXPECT_THAT(webView->scripts, SizeIs(1)) << "nothing beyond the support test";
    EXPECT_THAT(fakes_.log->takeLines(), ElementsAre("ZAM not support pad filter feature..."));
  }
}

// The page has its result ready, but returns it only later.
TEST_F(AdFilterFeatureTest, aPageTooBusyToSayWhetherItTakesPartIsNotCalledUnsupported) {
  controller_->setPushAdMode(MyPushAdModePopup);
  controller_->view();
  const auto webView = fakes_.interfaceLoader->webViews.at(0).lock();
  const auto answer = pageListing("com.a.one")->page;
  webView->page = [&](const std::string& script) {
    return webView->isAnswering ? answer(script) : std::string();
  };
  webView->isAnswering = false;
  controller_->webViewDidFinishLoadForFrame(webView, {});
  EXPECT_THAT(webView->scripts, SizeIs(1)) << "nothing beyond the support test";
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
  webView->scripts.clear();
  webView->answerAgain();
  ASSERT_THAT(webView->scripts, SizeIs(4)) << "with the hiding of the close control";
  EXPECT_EQ(webView->scripts[2],
            "cocoa_post_promo_app_info('com.host.app', ['com.a.one'], ['1']);");
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
  EXPECT_THAT(webView->whenAnswering, IsEmpty());
}

TEST_F(AdFilterFeatureTest, aPageThatIsBusyEachTimeItIsAskedDoesNotTakePart) {
  controller_->view();
  const auto webView = fakes_.interfaceLoader->webViews.at(0).lock();
  webView->isAnswering = false;
  controller_->webViewDidFinishLoadForFrame(webView, {});
  for (int i = 0; i < 5; ++i) {
    EXPECT_THAT(fakes_.log->lines(), IsEmpty());
    ASSERT_THAT(webView->whenAnswering, SizeIs(1));
    std::exchange(webView->whenAnswering, {}).front()();
  }
  EXPECT_THAT(webView->scripts, SizeIs(6));
  EXPECT_THAT(webView->whenAnswering, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM not support pad filter feature..."));
}

TEST_F(AdFilterFeatureTest, aBusyPageKeepsNobodyAlive) {
  controller_->view();
  const auto webView = fakes_.interfaceLoader->webViews.at(0).lock();
  webView->isAnswering = false;
  controller_->webViewDidFinishLoadForFrame(webView, {});
  const std::weak_ptr<MyPushAdViewController> watch = controller_;
  controller_.reset();
  EXPECT_TRUE(watch.expired());
  webView->scripts.clear();
  webView->answerAgain();
  EXPECT_THAT(webView->scripts, IsEmpty());
}

TEST_F(AdFilterFeatureTest, whileMuchIsLookedUpTheHostIsServed) {
  struct SlowRegistry : ApplicationRegistry {
    std::vector<Url> applicationUrlsForBundleIdentifier(const std::string&) override {
      const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(7);
      while (std::chrono::steady_clock::now() < end) {
      }
      return {};
    }
  };
  auto services = fakes_.services();
  services.applicationRegistry = std::make_shared<SlowRegistry>();
  installPlatform(std::move(services));
  EXPECT_THAT(MyPushAdViewController::findAppInstallFlagsWithAppIds(Array(12, Value("a"))),
              SizeIs(12));
  EXPECT_GE(fakes_.runLoop->timesHostWasServed, 3);
  EXPECT_LT(fakes_.runLoop->timesHostWasServed, 10) << "in slices, not after each";
}

TEST_F(AdFilterFeatureTest, theHostsIdentifierIsReadAfreshAndBeforeTheList) {
  const auto webView = std::make_shared<FakeWebView>();
  const auto answer = pageListing("com.a.one")->page;
  webView->page = [&](const std::string& script) {
    if (script == kListScript) {
      MyPushAdManager::sharedPushAdManager()->setAppBundleIdentifier("com.later.app");
    }
    return answer(script);
  };
  controller_->processAdFilterFeatureIfNeeded(webView);
  EXPECT_EQ(webView->scripts.back(),
            "cocoa_post_promo_app_info('com.host.app', ['com.a.one'], ['1']);");
  controller_->processAdFilterFeatureIfNeeded(webView);
  EXPECT_EQ(webView->scripts.back(),
            "cocoa_post_promo_app_info('com.later.app', ['com.a.one'], ['1']);");
}

TEST_F(AdFilterFeatureTest, withoutAWebViewNothingIsSupported) {
  EXPECT_FALSE(controller_->isSupportAdFilterFeature(nullptr));
  controller_->processAdFilterFeatureIfNeeded(nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM not support pad filter feature..."));
}

TEST_F(AdFilterFeatureTest, aSubclassThatSupportsNoWebViewIsStopped) {
  struct Optimist : MyPushAdViewController {
    bool isSupportAdFilterFeature(const std::shared_ptr<WebView>& /*webView*/) override {
      return true;
    }
  };
  MyPushAdViewController::createInstanceWithPushAdMode<Optimist>(0)->processAdFilterFeatureIfNeeded(
      nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM No valid webview..."));
}

TEST_F(AdFilterFeatureTest, anEmptyAnswerStillTellsThePageWithEmptyLists) {
  EXPECT_EQ(answerTo(""), "cocoa_post_promo_app_info('com.host.app', [], []);");
}

TEST_F(AdFilterFeatureTest, aListOfManyKilobytesIsLoggedAndTakenAsEmpty) {
  EXPECT_EQ(answerTo(std::string(65537, 'a')),
            "cocoa_post_promo_app_info('com.host.app', [], []);");
  EXPECT_THAT(fakes_.log->takeLines(),
              ElementsAre("ZAM Ad page's list of applications is too long: 65537 bytes"));
  answerTo(std::string(65536, ','));
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
  EXPECT_THAT(registry_->asked, IsEmpty());
}

TEST_F(AdFilterFeatureTest, aListOfAThousandApplicationsIsTakenWhole) {
  std::string list;
  for (int i = 0; i < 1000; ++i) {
    list += "com.example.department.applications.product-number-" + std::to_string(1000 + i) + ",";
  }
  answerTo(list);
  EXPECT_THAT(registry_->asked, SizeIs(1000));
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(AdFilterFeatureTest, aHostWithoutIdentifierIsTheEmptyText) {
  MyPushAdManager::sharedPushAdManager()->setAppBundleIdentifier(std::nullopt);
  EXPECT_EQ(answerTo("com.a.one"), "cocoa_post_promo_app_info('', ['com.a.one'], ['1']);");
}

TEST_F(AdFilterFeatureTest, theListIsSplitAtCommasAndTrimmed) {
  EXPECT_THAT(textsOf(MyPushAdViewController::parseArrayWithJSString(" \tcom.a.one ,, \xC2\xA0"
                                                                     "com.b.two\t, ")),
              ElementsAre("com.a.one", "com.b.two"));
  EXPECT_THAT(textsOf(MyPushAdViewController::parseArrayWithJSString("a,a")),
              ElementsAre("a", "a"));
}

TEST_F(AdFilterFeatureTest, manyBlanksAtOneEndAreTrimmed) {
  EXPECT_THAT(textsOf(MyPushAdViewController::parseArrayWithJSString("x,   a")),
              ElementsAre("x", "a"));
  EXPECT_THAT(textsOf(MyPushAdViewController::parseArrayWithJSString("a   ,x")),
              ElementsAre("a", "x"));
}

TEST_F(AdFilterFeatureTest, lineBreaksQuotesAndBracketsStay) {
  EXPECT_THAT(textsOf(MyPushAdViewController::parseArrayWithJSString("a\nb\n")),
              ElementsAre("a\nb\n"));
  EXPECT_THAT(textsOf(MyPushAdViewController::parseArrayWithJSString("['a', 'b']")),
              ElementsAre("['a'", "'b']"));
}

TEST_F(AdFilterFeatureTest, whatIsNoTextIsNoList) {
  EXPECT_THAT(MyPushAdViewController::parseArrayWithJSString({}), IsEmpty());
  EXPECT_THAT(MyPushAdViewController::parseArrayWithJSString(5), IsEmpty());
  EXPECT_THAT(MyPushAdViewController::parseArrayWithJSString(""), IsEmpty());
}

TEST_F(AdFilterFeatureTest, eachEntryGetsExactlyOneFlag) {
  EXPECT_THAT(textsOf(MyPushAdViewController::findAppInstallFlagsWithAppIds(
                  Array{"com.a.one", 5, "", "com.b.two", "com.a.one"})),
              ElementsAre("1", "0", "0", "0", "1"));
  EXPECT_THAT(registry_->asked, ElementsAre("com.a.one", "com.b.two", "com.a.one"));
  EXPECT_THAT(MyPushAdViewController::findAppInstallFlagsWithAppIds(std::nullopt), IsEmpty());
}

TEST_F(AdFilterFeatureTest, arrayLiteralsEscapeNothing) {
  EXPECT_EQ(MyPushAdViewController::convertToJSArrayWithStringArray(std::nullopt), "[]");
  EXPECT_EQ(MyPushAdViewController::convertToJSArrayWithStringArray(Array{}), "[]");
  EXPECT_EQ(MyPushAdViewController::convertToJSArrayWithStringArray(Array{"a"}), "['a']");
  EXPECT_EQ(MyPushAdViewController::convertToJSArrayWithStringArray(Array{"it's", "b\\", 7}),
            "['it's', 'b\\', '7']");
}

}  // namespace
}  // namespace qorix
