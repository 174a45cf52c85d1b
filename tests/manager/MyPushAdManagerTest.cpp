#include <gmock/gmock.h>

#include <thread>

#include "fakes/FakePlatform.h"
#include "qorix/MyPushAdCloudManager.h"
#include "qorix/MyPushAdManager.h"
#include "qorix/MyPushAdWebServerManager.h"
#include "support/CheckLines.h"
#include "support/Documents.h"
#include "support/Records.h"

namespace qorix {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr const char* kAddress = "https://ads.example.com/commonad.xml";
constexpr const char* kCacheKey = "ZAMPushAdCachedAdContentsKey";
constexpr const char* kNoBundleMessage = "ZAM Warning: You dont configure app bundle identifier...";
constexpr const char* kAllocMessage =
    "***Error***: alloc another object!!! This MACRO only supports really singlton class.";

std::string managerCheck(const std::string& method, int line, const std::string& message) {
  return checkLine("-[MyPushAdManager " + method + "]", line, message);
}

std::string prepareCheck(int line, const std::string& message) {
  return managerCheck("prepareAndShowAdWithHostView:fileHostMode:address:", line, message);
}

class ManagerTest : public ::testing::Test {
 protected:
  ManagerTest() {
    installPlatform(fakes_.services());
    hostView_->setFrame({{0, 0}, {500, 300}});
  }

  /// The shared manager, configured as a host does.
  MyPushAdManager& manager() {
    const auto shared = MyPushAdManager::sharedPushAdManager();
    shared->configureWithAppBundle(platform().mainBundle);
    return *shared;
  }

  void show(const std::shared_ptr<View>& view) {
    manager().prepareAndShowAdWithHostView(view, MyPushAdFileHostModeWebServer, kAddress);
  }

  FakeUrlSession& session() { return *fakes_.urlSessions->sessions.at(0); }

  /// The running download brings `text`.
  void land(const std::string& text) {
    session().deliver(text);
    session().complete();
    fakes_.runLoop->runUntilIdle();
  }

  void storeInCache(const std::string& text) { fakes_.userDefaults->setString(text, kCacheKey); }
  std::optional<std::string> cached() { return fakes_.userDefaults->stringForKey(kCacheKey); }

  FakePlatform fakes_;
  std::shared_ptr<FakeView> hostView_ = std::make_shared<FakeView>();
};

// The one instance.

TEST_F(ManagerTest, everyCallAnswersTheSharedManager) {
  const auto shared = MyPushAdManager::sharedPushAdManager();
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), shared);
  EXPECT_EQ(shared->copy(), shared);
  EXPECT_FALSE(shared->isDownloadFileRequested());
  EXPECT_EQ(shared->pushAdSource(), nullptr);
  EXPECT_EQ(shared->lonePushAdInfo(), nullptr);
  EXPECT_EQ(shared->appBundleIdentifier(), std::nullopt);
  EXPECT_THAT(*shared->pushAdOperators(), IsEmpty());
  EXPECT_EQ(shared->stubMemoryHostWindow(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(ManagerTest, aSecondAllocationIsRefusedAndLogged) {
  const auto shared = MyPushAdManager::sharedPushAdManager();
  EXPECT_EQ(MyPushAdManager::alloc(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kAllocMessage));
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), shared);
}

TEST_F(ManagerTest, anAllocationOfTheHostsOwnLeavesNoSharedManager) {
  const auto own = MyPushAdManager::alloc();
  EXPECT_NE(own, nullptr);
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), nullptr);
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kAllocMessage, kAllocMessage));
}

TEST_F(ManagerTest, theSharedManagerIsOfTheReceivingClass) {
  struct Special : MyPushAdManager {};
  const auto shared = MyPushAdManager::sharedPushAdManager<Special>();
  EXPECT_NE(std::dynamic_pointer_cast<Special>(shared), nullptr);
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), shared);
}

TEST_F(ManagerTest, threadsThatRaceForTheSharedManagerGetTheSame) {
  std::vector<std::shared_ptr<MyPushAdManager>> seen(8);
  std::vector<std::thread> threads;
  threads.reserve(seen.size());
  for (auto& each : seen) {
    threads.emplace_back([&each] { each = MyPushAdManager::sharedPushAdManager(); });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_THAT(seen, Each(seen.front()));
  EXPECT_NE(seen.front(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

// Configuration.

TEST_F(ManagerTest, takesTheIdentifierOfABundleOnly) {
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

TEST_F(ManagerTest, withoutABundleIdentifierItWarnsAndGoesOn) {
  const auto shared = MyPushAdManager::sharedPushAdManager();
  shared->prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeWebServer, kAddress);
  shared->setAppBundleIdentifier("");
  shared->prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeWebServer, kAddress);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kNoBundleMessage, kNoBundleMessage));
  EXPECT_EQ(shared->pushAdOperators()->size(), 2U);
}

// The show request.

TEST_F(ManagerTest, twoRequestsWithoutAViewShareOneStubWindow) {
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

TEST_F(ManagerTest, aRequestThatGetsNoHostViewIsDropped) {
  fakes_.windows->isBroken = true;
  show(nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(prepareCheck(157, kFatalMessage)));
  EXPECT_THAT(*manager().pushAdOperators(), IsEmpty());
  EXPECT_FALSE(manager().isDownloadFileRequested());
}

TEST_F(ManagerTest, theWarningAboutTheBundleComesBeforeTheFaultOfTheView) {
  fakes_.windows->isBroken = true;
  MyPushAdManager::sharedPushAdManager()->prepareAndShowAdWithHostView(
      nullptr, MyPushAdFileHostModeWebServer, kAddress);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kNoBundleMessage, prepareCheck(157, kFatalMessage)));
}

TEST_F(ManagerTest, aRequestWithoutAListOfOperatorsIsDropped) {
  manager().setPushAdOperators(std::nullopt);
  show(hostView_);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(prepareCheck(158, kFatalMessage)));
  EXPECT_FALSE(manager().isDownloadFileRequested());
}

TEST_F(ManagerTest, aRequestThatGetsNoOperatorIsDropped) {
  struct WithoutOperators : MyPushAdManager {
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

TEST_F(ManagerTest, twoRequestsWithOneViewMakeTwoOperators) {
  show(hostView_);
  show(hostView_);
  EXPECT_EQ(manager().pushAdOperators()->size(), 2U);
}

TEST_F(ManagerTest, theFirstRequestStartsTheWebSource) {
  show(hostView_);
  EXPECT_NE(std::dynamic_pointer_cast<MyPushAdWebServerManager>(manager().pushAdSource()), nullptr);
  EXPECT_EQ(manager().pushAdSource()->delegate(), MyPushAdManager::sharedPushAdManager());
  EXPECT_THAT(session().startedUrls, ElementsAre(kAddress));
  EXPECT_TRUE(manager().isDownloadFileRequested());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(ManagerTest, laterRequestsNeverStartAnotherSource) {
  show(hostView_);
  const auto source = manager().pushAdSource();
  manager().prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeCloudKit, "iCloud.other");
  manager().prepareAndShowAdWithHostView(hostView_, MyPushAdFileHostModeWebServer,
                                         "https://other.example.com/");
  EXPECT_EQ(manager().pushAdSource(), source);
  EXPECT_EQ(fakes_.urlSessions->sessions.size(), 1U);
  EXPECT_THAT(session().startedUrls, ElementsAre(kAddress));
}

TEST_F(ManagerTest, anUnknownModeLeavesTheManagerWithoutSourceForGood) {
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

TEST_F(ManagerTest, afterAnUnknownModeNoLaterRequestStartsASourceEvenWithoutADefinition) {
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

TEST_F(ManagerTest, theDefaultAddressesAreTheDeployments) {
  manager().prepareAndShowAdByUsingMyAppWebServerURLWithHostView(hostView_);
  ASSERT_EQ(session().startedUrls.size(), 1U);
  EXPECT_EQ(session().startedUrls[0], platform().defaultAdFileUrl);
  EXPECT_TRUE(session().startedUrls[0].starts_with("https://"));
  EXPECT_TRUE(session().startedUrls[0].ends_with("/mac/ads/commonad.xml"));
}

TEST_F(ManagerTest, theDefaultContainerIsTheDeployments) {
  manager().prepareAndShowAdByUsingDefaultCloudKitContainerWithHostView(hostView_);
  const auto source = std::dynamic_pointer_cast<MyPushAdCloudManager>(manager().pushAdSource());
  ASSERT_NE(source, nullptr);
  EXPECT_EQ(source->cloudContainerIdentifier(), platform().defaultCloudContainerIdentifier);
  EXPECT_EQ(source->delegate(), MyPushAdManager::sharedPushAdManager());
}

// The cached definition.

TEST_F(ManagerTest, withAnEmptyCacheNothingIsOfferedBeforeTheDownloadLands) {
  show(hostView_);
  EXPECT_EQ(manager().lonePushAdInfo(), nullptr);
  EXPECT_FALSE(manager().pushAdOperators()->at(0)->isProcessShowAdRequested());
  land(makeDocument());
  EXPECT_TRUE(manager().pushAdOperators()->at(0)->isProcessShowAdRequested());
}

TEST_F(ManagerTest, theCachedDefinitionIsOfferedAfterTheDownloadWasStarted) {
  storeInCache(makeDocument({.adid = "7"}));
  show(hostView_);
  EXPECT_EQ(session().startedUrls.size(), 1U);
  ASSERT_NE(manager().lonePushAdInfo(), nullptr);
  EXPECT_EQ(manager().lonePushAdInfo()->adId(), 7);
  EXPECT_EQ(manager().pushAdOperators()->at(0)->myPushAdInfo(), manager().lonePushAdInfo());
}

TEST_F(ManagerTest, aLaterRequestIsOfferedTheHeldAndThenTheCachedDefinition) {
  storeInCache(makeDocument({.adid = "7", .enable = "0"}));
  const auto held = makeRecord({.adId = 99});
  manager().setLonePushAdInfo(held);
  show(hostView_);
  EXPECT_EQ(manager().pushAdOperators()->at(0)->myPushAdInfo(), held) << "the first offer counts";
  EXPECT_EQ(manager().lonePushAdInfo()->adId(), 7) << "the cached one replaces the held one";
  EXPECT_THAT(fakes_.urlSessions->sessions, IsEmpty()) << "a held definition starts no source";
  EXPECT_FALSE(manager().isDownloadFileRequested());
}

TEST_F(ManagerTest, aFreshDefinitionGovernsUndecidedOperatorsOnly) {
  storeInCache(makeDocument({.adid = "7"}));
  show(hostView_);
  const auto decided = manager().pushAdOperators()->at(0);
  land(makeDocument({.adid = "8"}));
  EXPECT_EQ(decided->myPushAdInfo()->adId(), 7);
  EXPECT_EQ(manager().lonePushAdInfo()->adId(), 8);
  show(std::make_shared<FakeView>());
  EXPECT_EQ(manager().pushAdOperators()->at(1)->myPushAdInfo()->adId(), 8);
}

TEST_F(ManagerTest, aCachedTextThatNoLongerParsesIsLoggedByEveryRequestAndKept) {
  storeInCache("<rootcfg/>");
  show(hostView_);
  show(hostView_);
  const auto logged = fakes_.log->takeLines();
  EXPECT_EQ(std::count(logged.begin(), logged.end(),
                       managerCheck("fetchCachedPushAdInfo", 304, kVerifyFailedMessage)),
            2);
  EXPECT_EQ(manager().lonePushAdInfo(), nullptr);
  EXPECT_EQ(cached(), "<rootcfg/>");

  land(makeDocument());
  fakes_.log->takeLines();
  show(hostView_);
  EXPECT_THAT(fakes_.log->lines(),
              Not(Contains(managerCheck("fetchCachedPushAdInfo", 304, kVerifyFailedMessage))));
}

TEST_F(ManagerTest, clearingForgetsTheCacheUntilTheNextSuccess) {
  show(hostView_);
  land(makeDocument());
  const auto inForce = manager().lonePushAdInfo();
  fakes_.log->takeLines();
  manager().clearCachedAdContents();
  EXPECT_EQ(cached(), std::nullopt);
  EXPECT_EQ(manager().fetchCachedPushAdInfo(), nullptr);
  EXPECT_EQ(manager().lonePushAdInfo(), inForce);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
  manager().downloadSuccessfullyWithString(makeDocument());
  EXPECT_NE(manager().fetchCachedPushAdInfo(), nullptr);
}

TEST_F(ManagerTest, savingTwiceLeavesOneTextAndLogsTwice) {
  manager().saveAsCachedPushAdWith("text");
  manager().saveAsCachedPushAdWith("text");
  EXPECT_EQ(cached(), "text");
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre("ZAM dadstring is saved.", "ZAM dadstring is saved."));
}

TEST_F(ManagerTest, savingAndClearingAreMadeDurableAtOnce) {
  struct CountingDefaults : MemoryUserDefaults {
    bool synchronize() override {
      cachedAtSynchronize.push_back(stringForKey(kCacheKey).value_or("nothing"));
      return true;
    }
    std::vector<std::string> cachedAtSynchronize;
  };
  const auto defaults = std::make_shared<CountingDefaults>();
  auto services = fakes_.services();
  services.standardUserDefaults = defaults;
  installPlatform(std::move(services));
  manager().saveAsCachedPushAdWith("text");
  EXPECT_THAT(defaults->cachedAtSynchronize, ElementsAre("text"));
  manager().clearCachedAdContents();
  EXPECT_THAT(defaults->cachedAtSynchronize, ElementsAre("text", "nothing"));
}

TEST_F(ManagerTest, savingNothingKeepsTheCache) {
  storeInCache("good");
  manager().saveAsCachedPushAdWith(std::nullopt);
  manager().saveAsCachedPushAdWith("");
  EXPECT_EQ(cached(), "good");
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(ManagerTest, anAbsentOrEmptyOrForeignCacheIsNoDefinition) {
  EXPECT_EQ(manager().fetchCachedPushAdInfo(), nullptr);
  storeInCache("");
  EXPECT_EQ(manager().fetchCachedPushAdInfo(), nullptr);
  fakes_.userDefaults->setInteger(5, kCacheKey);
  EXPECT_EQ(manager().fetchCachedPushAdInfo(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(ManagerTest, theCachedTextIsParsedAnewByEachCall) {
  storeInCache(makeDocument());
  EXPECT_NE(manager().fetchCachedPushAdInfo(), manager().fetchCachedPushAdInfo());
}

// The download.

TEST_F(ManagerTest, aGoodTextIsCachedAndOfferedToEveryOperator) {
  const auto other = std::make_shared<FakeView>();
  show(hostView_);
  show(other);
  const std::string text = makeDocument();
  land(text);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dSuccess", "ZAM dadstring is saved."));
  EXPECT_EQ(cached(), text);
  for (const auto& presenter : *manager().pushAdOperators()) {
    EXPECT_EQ(presenter->myPushAdInfo(), manager().lonePushAdInfo());
  }
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), IsEmpty()) << "a success ends the chain";
}

TEST_F(ManagerTest, aGoodTextIsCachedBeforeItIsOffered) {
  show(hostView_);
  show(std::make_shared<FakeView>());
  land(makeDocument({.enable = "0"}));
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dSuccess", "ZAM dadstring is saved.",
                                               "ZAM Disabled.", "ZAM Disabled."));
}

TEST_F(ManagerTest, operatorsAreAskedInTheOrderOfTheirCreation) {
  const auto second = std::make_shared<FakeView>();
  show(hostView_);
  show(second);
  land(makeDocument({.count = "1"}));
  EXPECT_EQ(hostView_->children.size(), 1U) << "the first one gets the only showing";
  EXPECT_THAT(second->children, IsEmpty());
}

TEST_F(ManagerTest, aTextThatDoesNotParseIsTriedAgainInAMinute) {
  storeInCache(makeDocument({.adid = "7"}));
  show(hostView_);
  fakes_.log->takeLines();
  land("<html>404</html>");
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre("ZAM dSuccess",
                          checkLine("+[MyPushAdUtil parseXMLWithString:]", 94, kFatalMessage),
                          managerCheck("downloadSuccessfullyWithString:", 256, kFatalMessage),
                          "ZAM OK. but rty"));
  EXPECT_EQ(cached(), makeDocument({.adid = "7"}));
  EXPECT_EQ(manager().lonePushAdInfo()->adId(), 7);
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), ElementsAre(60));
  fakes_.runLoop->advance(60);
  EXPECT_EQ(session().startedUrls.size(), 2U);
}

TEST_F(ManagerTest, failuresAreTriedAgainEveryMinuteWithoutLimit) {
  show(hostView_);
  for (std::size_t attempt = 1; attempt <= 50; ++attempt) {
    ASSERT_EQ(session().startedUrls.size(), attempt);
    session().complete(Error{"curl", 7, "refused"});
    fakes_.runLoop->runUntilIdle();
    ASSERT_THAT(fakes_.runLoop->pendingDelays(), ElementsAre(60));
    fakes_.runLoop->advance(60);
  }
  EXPECT_THAT(fakes_.log->lines(), Each("ZAM dError rty"));
  EXPECT_EQ(fakes_.log->lines().size(), 50U);
  land(makeDocument());
  EXPECT_NE(manager().lonePushAdInfo(), nullptr);
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), IsEmpty());
}

TEST_F(ManagerTest, aTextOf500CharactersIsNotExcerptedAndOneOf501Is) {
  const std::string document = makeDocument();
  const std::size_t missing = 500 - document.size() - std::string("<!---->").size();
  manager().downloadSuccessfullyWithString(makeDocument({.padding = std::string(missing, 'x')}));
  EXPECT_THAT(fakes_.log->takeLines(), ElementsAre("ZAM dSuccess", "ZAM dadstring is saved."));
  manager().downloadSuccessfullyWithString(
      makeDocument({.padding = std::string(missing + 1, 'x')}));
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dSuccess",
                                               "ZAM A small part of the beginning of dstring (" +
                                                   document.substr(0, 100) + ")",
                                               "ZAM dadstring is saved."));
}

TEST_F(ManagerTest, aSuccessWithoutAListOfOperatorsIsLoggedAndKept) {
  manager().setPushAdOperators(std::nullopt);
  manager().downloadSuccessfullyWithString(makeDocument());
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dSuccess",
                                               managerCheck("downloadSuccessfullyWithString:", 253,
                                                            kVerifyFailedMessage),
                                               "ZAM dadstring is saved."));
  EXPECT_NE(manager().lonePushAdInfo(), nullptr);
}

TEST_F(ManagerTest, aSuccessBeforeAnyOperatorIsCachedAndKept) {
  manager().downloadSuccessfullyWithString(makeDocument());
  EXPECT_NE(manager().lonePushAdInfo(), nullptr);
  EXPECT_EQ(cached(), makeDocument());
}

}  // namespace
}  // namespace qorix
