#include <functional>
#include <utility>

#include <qorix/platform/Log.h>

#include "manager/ManagerTest.h"
#include "support/Documents.h"

namespace qorix {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

class DownloadTest : public ManagerTest {};

TEST_F(DownloadTest, aGoodTextIsCachedAndOfferedToEveryOperator) {
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

TEST_F(DownloadTest, aGoodTextIsCachedBeforeItIsOffered) {
  show(hostView_);
  show(std::make_shared<FakeView>());
  land(makeDocument({.enable = "0"}));
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dSuccess", "ZAM dadstring is saved.",
                                               "ZAM Disabled.", "ZAM Disabled."));
}

TEST_F(DownloadTest, operatorsAreAskedInTheOrderOfTheirCreation) {
  const auto second = std::make_shared<FakeView>();
  show(hostView_);
  show(second);
  land(makeDocument({.count = "1"}));
  EXPECT_EQ(hostView_->children.size(), 1U) << "the first one gets the only showing";
  EXPECT_THAT(second->children, IsEmpty());
}

/// Logs when it is asked to try again.
struct TellingSource : MyPushAdSource {
  void downloadAdFileAsync() override {}
  void retryDownloadAdFileWithDelay(double /*delay*/) override { logLine("tried again"); }
  std::shared_ptr<MyPushAdDownloadDelegate> delegate() const override { return nullptr; }
  void setDelegate(const std::shared_ptr<MyPushAdDownloadDelegate>& /*delegate*/) override {}
};

TEST_F(DownloadTest, anotherAttemptIsLoggedBeforeItIsAskedFor) {
  manager().setPushAdSource(std::make_shared<TellingSource>());
  manager().downloadFailedWithError(Error{"no network", 1, ""});
  manager().downloadSuccessfullyWithString("no document");
  const auto lines = fakes_.log->lines();
  ASSERT_THAT(lines, SizeIs(7));
  EXPECT_EQ(lines[0], "ZAM dError rty");
  EXPECT_EQ(lines[1], "tried again");
  EXPECT_EQ(lines[5], "ZAM OK. but rty");
  EXPECT_EQ(lines[6], "tried again");
}

TEST_F(DownloadTest, aTextIsCachedBeforeItsRecordIsTheCurrentOne) {
  struct WatchingLog : Log {
    void write(std::string_view message) override {
      hadRecord.emplace_back(message,
                             MyPushAdManager::sharedPushAdManager()->lonePushAdInfo() != nullptr);
    }
    std::vector<std::pair<std::string, bool>> hadRecord;
  };
  show(hostView_);
  const auto log = std::make_shared<WatchingLog>();
  auto services = fakes_.services();
  services.log = log;
  installPlatform(std::move(services));
  land(makeDocument());
  EXPECT_THAT(log->hadRecord, Contains(Pair("ZAM dadstring is saved.", false)));
}

TEST_F(DownloadTest, aTextThatDoesNotParseIsTriedAgainInAMinute) {
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

TEST_F(DownloadTest, failuresAreTriedAgainEveryMinuteWithoutLimit) {
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

TEST_F(DownloadTest, aFailureDoesNotConsultTheCache) {
  show(hostView_);
  storeInCache(makeDocument());
  session().complete(Error{"curl", 7, "refused"});
  fakes_.runLoop->runUntilIdle();
  land("");
  EXPECT_EQ(manager().lonePushAdInfo(), nullptr);
  EXPECT_EQ(manager().pushAdOperators()->at(0)->myPushAdInfo(), nullptr);
}

TEST_F(DownloadTest, aTextOf500CharactersIsNotExcerptedAndOneOf501Is) {
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

TEST_F(DownloadTest, aLongTextThatDoesNotParseIsExcerptedAndTheMissingListLoggedFirst) {
  manager().setPushAdOperators(std::nullopt);
  manager().downloadSuccessfullyWithString("<html>" + std::string(600, 'x'));
  EXPECT_THAT(
      fakes_.log->lines(),
      ElementsAre(
          "ZAM dSuccess",
          "ZAM A small part of the beginning of dstring (<html>" + std::string(94, 'x') + ")",
          managerCheck("downloadSuccessfullyWithString:", 253, kVerifyFailedMessage),
          checkLine("+[MyPushAdUtil parseXMLWithString:]", 91, kFatalMessage),
          managerCheck("downloadSuccessfullyWithString:", 256, kFatalMessage), "ZAM OK. but rty"));
}

TEST_F(DownloadTest, aRequestFromInsideTheWalkJoinsInAndDoesNotDisturbIt) {
  /// Settings that do something when the first showing is counted.
  struct ActingDefaults : MemoryUserDefaults {
    void setInteger(std::int64_t value, const std::string& key) override {
      MemoryUserDefaults::setInteger(value, key);
      if (const auto act = std::exchange(onFirstCount, nullptr)) {
        act();
      }
    }
    std::function<void()> onFirstCount;
  };
  const auto defaults = std::make_shared<ActingDefaults>();
  fakes_.userDefaults = defaults;
  installPlatform(fakes_.services());
  const auto second = std::make_shared<FakeView>();
  const auto third = std::make_shared<FakeView>();
  show(hostView_);
  show(second);
  std::shared_ptr<const MyPushAdInfo> downloaded;
  defaults->onFirstCount = [&] {
    downloaded = manager().lonePushAdInfo();
    show(third);
  };
  land(makeDocument());
  const auto& presenters = *manager().pushAdOperators();
  ASSERT_EQ(presenters.size(), 3U);
  EXPECT_NE(manager().lonePushAdInfo(), downloaded) << "the request has read the cache";
  EXPECT_EQ(presenters[0]->myPushAdInfo(), downloaded);
  EXPECT_EQ(presenters[1]->myPushAdInfo(), manager().lonePushAdInfo())
      << "the walk goes on with it";
  EXPECT_EQ(presenters[2]->myPushAdInfo(), downloaded);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dSuccess", "ZAM dadstring is saved."));
}

TEST_F(DownloadTest, aSuccessWithoutAListOfOperatorsIsLoggedAndKept) {
  manager().setPushAdOperators(std::nullopt);
  manager().downloadSuccessfullyWithString(makeDocument());
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dSuccess",
                                               managerCheck("downloadSuccessfullyWithString:", 253,
                                                            kVerifyFailedMessage),
                                               "ZAM dadstring is saved."));
  EXPECT_NE(manager().lonePushAdInfo(), nullptr);
}

TEST_F(DownloadTest, aSuccessBeforeAnyOperatorIsCachedAndKept) {
  manager().downloadSuccessfullyWithString(makeDocument());
  EXPECT_NE(manager().lonePushAdInfo(), nullptr);
  EXPECT_EQ(cached(), makeDocument());
}

}  // namespace
}  // namespace qorix
