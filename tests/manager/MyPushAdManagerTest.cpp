#include <qorix/MyPushAdCloudManager.h>
#include <qorix/MyPushAdWebServerManager.h>

#include "manager/ManagerTest.h"
#include "support/Documents.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class MyPushAdManagerTest : public ManagerTest {};

// Configuration.

TEST_F(MyPushAdManagerTest, takesTheIdentifierOfABundleOnly) {
  const auto shared = MyPushAdManager::sharedPushAdManager();
  shared->configureWithAppBundle(platform().mainBundle);
  EXPECT_EQ(shared->appBundleIdentifier(), "com.example.editor");
  shared->configureWithAppBundle(nullptr);
  shared->configureWithAppBundle(hostView_);
  EXPECT_EQ(shared->appBundleIdentifier(), "com.example.editor");
  shared->configureWithAppBundle(platform().libraryBundle);
  EXPECT_EQ(shared->appBundleIdentifier(), std::nullopt) << "a later call overwrites";
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdManagerTest, withoutABundleIdentifierItWarnsAndGoesOn) {
  const auto shared = MyPushAdManager::sharedPushAdManager();
  shared->prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeWebServer, kAddress);
  shared->setAppBundleIdentifier("");
  shared->prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeWebServer, kAddress);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kNoBundleMessage, kNoBundleMessage));
  EXPECT_EQ(shared->pushAdOperators()->size(), 2U);
}

// The show request.

TEST_F(MyPushAdManagerTest, twoRequestsWithoutAViewShareOneStubWindow) {
  show(nullptr);
  show(nullptr);
  ASSERT_EQ(fakes_.windows->windows.size(), 1U);
  EXPECT_THAT(fakes_.windows->borderlessContentRects,
              ElementsAre(Rect{{-9000, -9000}, {100, 100}}));
  const auto content = fakes_.windows->windows[0]->contentView();
  EXPECT_EQ(manager().stubMemoryHostWindow(), fakes_.windows->windows[0]);
  ASSERT_EQ(manager().pushAdOperators()->size(), 2U);
  EXPECT_EQ(manager().pushAdOperators()->at(0)->hostView(), content);
  EXPECT_EQ(manager().pushAdOperators()->at(1)->hostView(), content);
  EXPECT_FALSE(fakes_.windows->windows[0]->visible);
}

TEST_F(MyPushAdManagerTest, aRequestThatGetsNoHostViewIsDropped) {
  fakes_.windows->isBroken = true;
  show(nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(prepareCheck(157, kFatalMessage)));
  EXPECT_THAT(*manager().pushAdOperators(), IsEmpty());
  EXPECT_FALSE(manager().isDownloadFileRequested());
}

TEST_F(MyPushAdManagerTest, aRequestForAViewThatItsHostHasDestroyedIsDropped) {
  hostView_->gone = true;
  show(hostView_);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(prepareCheck(157, kFatalMessage)));
  EXPECT_THAT(*manager().pushAdOperators(), IsEmpty());
  EXPECT_FALSE(manager().isDownloadFileRequested());
}

TEST_F(MyPushAdManagerTest, theWarningAboutTheBundleComesBeforeTheFaultOfTheView) {
  fakes_.windows->isBroken = true;
  MyPushAdManager::sharedPushAdManager()->prepareAndShowAdWithHostView(
      nullptr, MyPushAdFileHostModeWebServer, kAddress);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kNoBundleMessage, prepareCheck(157, kFatalMessage)));
}

TEST_F(MyPushAdManagerTest, aRequestWithoutAListOfOperatorsIsDropped) {
  manager().setPushAdOperators(std::nullopt);
  show(hostView_);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(prepareCheck(158, kFatalMessage)));
  EXPECT_FALSE(manager().isDownloadFileRequested());
}

TEST_F(MyPushAdManagerTest, theFaultOfTheViewComesBeforeThatOfTheListAndEndsTheRequest) {
  manager().setPushAdOperators(std::nullopt);
  fakes_.windows->isBroken = true;
  show(nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(prepareCheck(157, kFatalMessage)));
}

TEST_F(MyPushAdManagerTest, aRequestThatGetsNoOperatorIsDropped) {
  struct WithoutOperators : MyPushAdManager {
    using MyPushAdManager::MyPushAdManager;
    std::shared_ptr<MyPushAdOperator> createOperatorWithHostView(
        const std::shared_ptr<View>& /*hostView*/) override {
      return nullptr;
    }
  };
  MyPushAdManager::sharedPushAdManager<WithoutOperators>();
  show(hostView_);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(prepareCheck(162, kFatalMessage)));
  EXPECT_THAT(*manager().pushAdOperators(), IsEmpty());
  EXPECT_FALSE(manager().isDownloadFileRequested());
}

TEST_F(MyPushAdManagerTest, twoRequestsWithOneViewMakeTwoOperators) {
  show(hostView_);
  show(hostView_);
  EXPECT_EQ(manager().pushAdOperators()->size(), 2U);
}

TEST_F(MyPushAdManagerTest, theFirstRequestStartsTheWebSource) {
  show(hostView_);
  EXPECT_NE(std::dynamic_pointer_cast<MyPushAdWebServerManager>(manager().pushAdSource()), nullptr);
  EXPECT_EQ(manager().pushAdSource()->delegate(), MyPushAdManager::sharedPushAdManager());
  EXPECT_THAT(session().startedUrls, ElementsAre(kAddress));
  EXPECT_TRUE(manager().isDownloadFileRequested());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdManagerTest, laterRequestsNeverStartAnotherSource) {
  show(hostView_);
  const auto source = manager().pushAdSource();
  manager().prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeCloudKit, "iCloud.other");
  manager().prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeWebServer,
                                         "https://other.example.com/");
  EXPECT_EQ(manager().pushAdSource(), source);
  EXPECT_EQ(fakes_.urlSessions->sessions.size(), 1U);
  EXPECT_THAT(session().startedUrls, ElementsAre(kAddress));
}

TEST_F(MyPushAdManagerTest, anUnknownModeLeavesTheManagerWithoutSourceForGood) {
  storeInCache(makeDocument());
  manager().prepareAndShowAdWithHostView(hostView_, static_cast<MyPushAdFileHostMode>(2), kAddress);
  EXPECT_THAT(fakes_.log->takeLines(),
              ElementsAre(prepareCheck(189, "***Error***: ZAM FATAL ERROR GOT!"),
                          prepareCheck(193, kVerifyFailedMessage),
                          prepareCheck(194, kVerifyFailedMessage)));
  EXPECT_EQ(manager().pushAdSource(), nullptr);
  EXPECT_TRUE(manager().isDownloadFileRequested());
  EXPECT_NE(manager().lonePushAdInfo(), nullptr) << "the cached definition is still offered";
  EXPECT_TRUE(manager().pushAdOperators()->at(0)->isProcessShowAdRequested());

  show(hostView_);
  manager().prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeCloudKit, "iCloud.x");
  EXPECT_EQ(manager().pushAdSource(), nullptr);
  EXPECT_THAT(fakes_.urlSessions->sessions, IsEmpty());
  manager().downloadFailedWithError({});
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dError rty"));
}

TEST_F(MyPushAdManagerTest, afterAnUnknownModeNoLaterRequestStartsASourceEvenWithoutADefinition) {
  manager().prepareAndShowAdWithHostView(hostView_, static_cast<MyPushAdFileHostMode>(-1),
                                         kAddress);
  fakes_.log->takeLines();
  show(hostView_);
  manager().prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeCloudKit, "iCloud.x");
  EXPECT_EQ(manager().lonePushAdInfo(), nullptr);
  EXPECT_EQ(manager().pushAdSource(), nullptr);
  EXPECT_THAT(fakes_.urlSessions->sessions, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdManagerTest, withAnUnknownModeASourceThatIsThereIsStartedWithoutADelegate) {
  struct Source : MyPushAdSource {
    void downloadAdFileAsync() override {
      wasRequestedBefore.push_back(
          MyPushAdManager::sharedPushAdManager()->isDownloadFileRequested());
    }
    void retryDownloadAdFileWithDelay(double /*delay*/) override {}
    std::shared_ptr<MyPushAdDownloadDelegate> delegate() const override { return nullptr; }
    void setDelegate(const std::shared_ptr<MyPushAdDownloadDelegate>& /*delegate*/) override {
      ADD_FAILURE() << "an unknown mode sets no delegate";
    }
    std::vector<bool> wasRequestedBefore;
  };
  const auto source = std::make_shared<Source>();
  manager().setPushAdSource(source);
  manager().prepareAndShowAdWithHostView(hostView_, static_cast<MyPushAdFileHostMode>(2), kAddress);
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(prepareCheck(189, "***Error***: ZAM FATAL ERROR GOT!"),
                          prepareCheck(194, kVerifyFailedMessage)));
  EXPECT_EQ(manager().pushAdSource(), source);
  EXPECT_THAT(source->wasRequestedBefore, ElementsAre(false));
  EXPECT_TRUE(manager().isDownloadFileRequested());
}

TEST_F(MyPushAdManagerTest, theDefaultAddressesAreTheDeployments) {
  manager().prepareAndShowAdByUsingMyAppWebServerURLWithHostView(hostView_);
  ASSERT_EQ(session().startedUrls.size(), 1U);
  EXPECT_EQ(session().startedUrls[0], "https://www.example.com/mac/ads/commonad.xml");
}

TEST_F(MyPushAdManagerTest, theDefaultContainerIsTheDeployments) {
  manager().prepareAndShowAdByUsingDefaultCloudKitContainerWithHostView(hostView_);
  const auto source = std::dynamic_pointer_cast<MyPushAdCloudManager>(manager().pushAdSource());
  ASSERT_NE(source, nullptr);
  EXPECT_EQ(source->cloudContainerIdentifier(), "iCloud.com.example.ads");
  EXPECT_EQ(source->delegate(), MyPushAdManager::sharedPushAdManager());
}

TEST_F(MyPushAdManagerTest, aRequestForTheDefaultAddressLogsWhenThereIsNone) {
  Platform services = platform();
  services.defaultAdFileUrl.clear();
  installPlatform(services);
  manager().prepareAndShowAdByUsingMyAppWebServerURLWithHostView(hostView_);
  EXPECT_THAT(
      fakes_.log->lines(),
      ElementsAre("ZAM No address of the ad document: the platform has no defaultAdFileUrl"));
  EXPECT_TRUE(session().startedUrls.empty());
  EXPECT_TRUE(manager().isDownloadFileRequested());
}

TEST_F(MyPushAdManagerTest, aRequestForTheDefaultContainerLogsWhenThereIsNone) {
  Platform services = platform();
  services.defaultCloudContainerIdentifier.clear();
  installPlatform(services);
  manager().prepareAndShowAdByUsingDefaultCloudKitContainerWithHostView(hostView_);
  ASSERT_FALSE(fakes_.log->lines().empty());
  EXPECT_EQ(
      fakes_.log->lines()[0],
      "ZAM No address of the ad document: the platform has no defaultCloudContainerIdentifier");
  const auto source = std::dynamic_pointer_cast<MyPushAdCloudManager>(manager().pushAdSource());
  ASSERT_NE(source, nullptr);
  EXPECT_EQ(source->cloudContainerIdentifier(), std::nullopt);
}

}  // namespace
}  // namespace qorix
