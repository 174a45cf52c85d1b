#include "manager/ManagerTest.h"
#include "support/Documents.h"
#include "support/Records.h"

namespace qorix {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class CachedContentsTest : public ManagerTest {};

TEST_F(CachedContentsTest, withAnEmptyCacheNothingIsOfferedBeforeTheDownloadLands) {
  show(hostView_);
  EXPECT_EQ(manager().lonePushAdInfo(), nullptr);
  EXPECT_FALSE(manager().pushAdOperators()->at(0)->isProcessShowAdRequested());
  land(makeDocument());
  EXPECT_TRUE(manager().pushAdOperators()->at(0)->isProcessShowAdRequested());
}

TEST_F(CachedContentsTest, theCachedDefinitionIsOfferedAfterTheDownloadWasStarted) {
  storeInCache(makeDocument({.adid = "7"}));
  show(hostView_);
  EXPECT_EQ(session().startedUrls.size(), 1U);
  ASSERT_NE(manager().lonePushAdInfo(), nullptr);
  EXPECT_EQ(manager().lonePushAdInfo()->adId(), 7);
  EXPECT_EQ(manager().pushAdOperators()->at(0)->myPushAdInfo(), manager().lonePushAdInfo());
}

TEST_F(CachedContentsTest, theCacheIsReadAfterTheDownloadWasStarted) {
  struct WatchedDefaults : MemoryUserDefaults {
    std::optional<std::string> stringForKey(const std::string& key) override {
      if (key == kCacheKey) {
        startedUrls.push_back(sessions->sessions.at(0)->startedUrls);
      }
      return MemoryUserDefaults::stringForKey(key);
    }
    std::shared_ptr<FakeUrlSessionFactory> sessions;
    std::vector<std::vector<std::string>> startedUrls;  // at each reading
  };
  const auto defaults = std::make_shared<WatchedDefaults>();
  defaults->sessions = fakes_.urlSessions;
  fakes_.userDefaults = defaults;
  installPlatform(fakes_.services());
  show(hostView_);
  EXPECT_THAT(defaults->startedUrls, ElementsAre(ElementsAre(kAddress)));
}

TEST_F(CachedContentsTest, aRequestOffersTheCachedDefinitionToItsOwnOperatorOnly) {
  show(hostView_);
  storeInCache(makeDocument());
  show(std::make_shared<FakeView>());
  EXPECT_EQ(manager().pushAdOperators()->at(0)->myPushAdInfo(), nullptr);
  EXPECT_EQ(manager().pushAdOperators()->at(1)->myPushAdInfo(), manager().lonePushAdInfo());
}

TEST_F(CachedContentsTest, aRequestOffersTheHeldDefinitionToItsOwnOperatorOnly) {
  show(hostView_);
  const auto held = makeRecord();
  manager().setLonePushAdInfo(held);
  show(std::make_shared<FakeView>());
  EXPECT_EQ(manager().pushAdOperators()->at(0)->myPushAdInfo(), nullptr);
  EXPECT_EQ(manager().pushAdOperators()->at(1)->myPushAdInfo(), held);
}

TEST_F(CachedContentsTest, aLaterRequestIsOfferedTheHeldAndThenTheCachedDefinition) {
  storeInCache(makeDocument({.adid = "7", .enable = "0"}));
  const auto held = makeRecord({.adId = 99});
  manager().setLonePushAdInfo(held);
  show(hostView_);
  EXPECT_EQ(manager().pushAdOperators()->at(0)->myPushAdInfo(), held) << "the first offer counts";
  EXPECT_EQ(manager().lonePushAdInfo()->adId(), 7) << "the cached one replaces the held one";
  EXPECT_THAT(fakes_.urlSessions->sessions, IsEmpty()) << "a held definition starts no source";
  EXPECT_FALSE(manager().isDownloadFileRequested());
}

TEST_F(CachedContentsTest, aFreshDefinitionGovernsUndecidedOperatorsOnly) {
  storeInCache(makeDocument({.adid = "7"}));
  show(hostView_);
  const auto decided = manager().pushAdOperators()->at(0);
  land(makeDocument({.adid = "8"}));
  EXPECT_EQ(decided->myPushAdInfo()->adId(), 7);
  EXPECT_EQ(manager().lonePushAdInfo()->adId(), 8);
  show(std::make_shared<FakeView>());
  EXPECT_EQ(manager().pushAdOperators()->at(1)->myPushAdInfo()->adId(), 8);
}

TEST_F(CachedContentsTest, aCachedTextThatNoLongerParsesIsLoggedByEveryRequestAndKept) {
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

TEST_F(CachedContentsTest, clearingForgetsTheCacheUntilTheNextSuccess) {
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

TEST_F(CachedContentsTest, savingTwiceLeavesOneTextAndLogsTwice) {
  manager().saveAsCachedPushAdWith("text");
  manager().saveAsCachedPushAdWith("text");
  EXPECT_EQ(cached(), "text");
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre("ZAM dadstring is saved.", "ZAM dadstring is saved."));
}

TEST_F(CachedContentsTest, savingAndClearingAreMadeDurableAtOnce) {
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

TEST_F(CachedContentsTest, savingNothingKeepsTheCache) {
  storeInCache("good");
  manager().saveAsCachedPushAdWith(std::nullopt);
  manager().saveAsCachedPushAdWith("");
  EXPECT_EQ(cached(), "good");
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(CachedContentsTest, anAbsentOrEmptyOrForeignCacheIsNoDefinition) {
  EXPECT_EQ(manager().fetchCachedPushAdInfo(), nullptr);
  storeInCache("");
  EXPECT_EQ(manager().fetchCachedPushAdInfo(), nullptr);
  fakes_.userDefaults->setInteger(5, kCacheKey);
  EXPECT_EQ(manager().fetchCachedPushAdInfo(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(CachedContentsTest, theCachedTextIsParsedAnewByEachCall) {
  storeInCache(makeDocument());
  EXPECT_NE(manager().fetchCachedPushAdInfo(), manager().fetchCachedPushAdInfo());
}

}  // namespace
}  // namespace qorix
