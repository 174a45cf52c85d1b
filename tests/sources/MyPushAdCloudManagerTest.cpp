#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>
#include <utility>

#include <qorix/MyPushAdCloudManager.h>

#include "fakes/FakeCloudContainer.h"
#include "fakes/FakePlatform.h"
#include "support/CheckLines.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Records = std::vector<std::shared_ptr<CloudRecord>>;

constexpr const char* kConfigurationMessage = "***Error***: ZAM FATAL ERROR GOT!";

std::string cloudCheck(const std::string& method, int line, const std::string& message) {
  return checkLine("-[MyPushAdCloudManager " + method + "]", line, message);
}

std::string queryErrorLine(const std::string& description) {
  return cloudCheck("queryAndHandleAdFileWithFileName:", 123,
                    "The Cloud Query Error:Error Domain=cloud Code=7 \"" + description + "\"");
}

std::shared_ptr<CloudRecord> fileContents(Value value) {
  return std::make_shared<FakeCloudRecord>(Dictionary{{"filecontents", std::move(value)}});
}

struct OutcomeDelegate : MyPushAdDownloadDelegate {
  void downloadFailedWithError(const Error& error) override {
    outcomes.push_back(error.domain + " " + std::to_string(error.code));
    calledOn = std::this_thread::get_id();
  }
  void downloadSuccessfullyWithString(const std::string& text) override {
    outcomes.push_back("text " + text);
    calledOn = std::this_thread::get_id();
  }
  std::vector<std::string> outcomes;
  std::thread::id calledOn;
};

class MyPushAdCloudManagerTest : public ::testing::Test {
 public:
 protected:
  MyPushAdCloudManagerTest() {
    factory_->container = std::make_shared<FakeCloudContainer>();
    factory_->container->database = database_;
    auto services = fakes_.services();
    services.cloudContainers = factory_;
    installPlatform(std::move(services));
    source_->setDelegate(delegate_);
  }

  /// The query's outcome arrives on a thread of the database's own.
  void complete(const std::optional<Records>& records, const std::optional<Error>& error) {
    std::thread worker = database_->answer(records, error);
    EXPECT_TRUE(fakes_.runLoop->waitForWork(10)) << "nothing reaches the main thread";
    worker.join();
  }

  std::shared_ptr<CloudRecord> recordWithFile(const std::string& bytes) {
    const std::string path = folder_ / std::to_string(++files_);
    std::ofstream(path, std::ios::binary) << bytes;
    return fileContents(std::make_shared<FakeCloudAsset>(Url::fileUrl(path)));
  }

  std::vector<std::string> outcomesOf(const std::optional<Records>& records) {
    source_->downloadAdFileAsync();
    complete(records, std::nullopt);
    return delegate_->outcomes;
  }

  FakePlatform fakes_;
  std::shared_ptr<FakeCloudDatabase> database_ = std::make_shared<FakeCloudDatabase>();
  std::shared_ptr<FakeCloudContainerFactory> factory_ =
      std::make_shared<FakeCloudContainerFactory>();
  std::shared_ptr<OutcomeDelegate> delegate_ = std::make_shared<OutcomeDelegate>();
  std::shared_ptr<MyPushAdCloudManager> source_ =
      MyPushAdCloudManager::createInstanceWithCloudContainerId("iCloud.com.example.ads");
  const TemporaryFolder folder_;
  int files_ = 0;
};

TEST_F(MyPushAdCloudManagerTest, asksTheContainersDatabaseOnceAndQueriesByFileName) {
  EXPECT_THAT(factory_->asked, IsEmpty());
  source_->downloadAdFileAsync();
  source_->downloadAdFileAsync();
  EXPECT_THAT(factory_->asked, ElementsAre("iCloud.com.example.ads"));
  ASSERT_EQ(database_->queries.size(), 2U);
  EXPECT_EQ(database_->queries[0].recordType, "macadfiles");
  EXPECT_EQ(database_->queries[0].fieldName, "filename");
  EXPECT_EQ(database_->queries[0].fieldValue, "commonad");
}

TEST_F(MyPushAdCloudManagerTest, reportsTheTextOfTheLastRecordOnTheMainThread) {
  EXPECT_THAT(outcomesOf(Records{recordWithFile("first"), recordWithFile("last \u00E9")}),
              ElementsAre("text last \u00E9"));
  EXPECT_EQ(delegate_->calledOn, std::this_thread::get_id());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdCloudManagerTest, aLargeFileIsReadWhole) {
  std::string text(200'000, 'x');
  text.back() = 'y';
  EXPECT_TRUE(outcomesOf(Records{recordWithFile(text)}) == std::vector{"text " + text});
}

TEST_F(MyPushAdCloudManagerTest, anEmptyFileIsAnEmptyText) {
  EXPECT_THAT(outcomesOf(Records{recordWithFile("")}), ElementsAre("text "));
}

TEST_F(MyPushAdCloudManagerTest, aQueryErrorIsLoggedAndPassedOn) {
  source_->downloadAdFileAsync();
  complete(std::nullopt, Error{"cloud", 7, "rate limited"});
  EXPECT_THAT(delegate_->outcomes, ElementsAre("cloud 7"));
  EXPECT_EQ(delegate_->calledOn, std::this_thread::get_id());
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(queryErrorLine("rate limited")));
}

TEST_F(MyPushAdCloudManagerTest, aQueryErrorWithoutADescriptionIsLoggedAllTheSame) {
  source_->downloadAdFileAsync();
  complete(std::nullopt, Error{"cloud", 7, ""});
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(queryErrorLine("(null)")));
}

TEST_F(MyPushAdCloudManagerTest, noRecordsAreAnError) {
  EXPECT_THAT(outcomesOf(Records()), ElementsAre("Custom Error: results empty. 1"));
}

TEST_F(MyPushAdCloudManagerTest, noResultIsTheSameError) {
  EXPECT_THAT(outcomesOf(std::nullopt), ElementsAre("Custom Error: results empty. 1"));
}

TEST_F(MyPushAdCloudManagerTest, aLastRecordThatIsNoneIsTheSameError) {
  EXPECT_THAT(outcomesOf(Records{recordWithFile("first"), nullptr}),
              ElementsAre("Custom Error: results empty. 1"));
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdCloudManagerTest, aTextInPlaceOfTheAssetIsAnError) {
  EXPECT_THAT(outcomesOf(Records{fileContents("text")}),
              ElementsAre("Custom Error: handle record error. 2"));
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(cloudCheck("handleRecord:", 172, kFatalMessage)));
}

TEST_F(MyPushAdCloudManagerTest, anAssetWithoutAFileIsAnError) {
  EXPECT_THAT(outcomesOf(Records{fileContents(std::make_shared<FakeCloudAsset>(std::nullopt))}),
              ElementsAre("Custom Error: handle record error. 2"));
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(cloudCheck("handleRecord:", 173, kFatalMessage)));
}

TEST_F(MyPushAdCloudManagerTest, aFileThatIsGoneOrNotUtf8IsAnError) {
  EXPECT_THAT(outcomesOf(Records{recordWithFile("caf\xE9")}),
              ElementsAre("Custom Error: handle record error. 2"));
  outcomesOf(
      Records{fileContents(std::make_shared<FakeCloudAsset>(Url::fileUrl("/nowhere/at all")))});
  outcomesOf(Records{fileContents(std::make_shared<FakeCloudAsset>(
      Url::fileUrl(std::filesystem::temp_directory_path().string())))});
  EXPECT_EQ(delegate_->outcomes.size(), 3U);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(cloudCheck("handleRecord:", 176, kFatalMessage),
                                               cloudCheck("handleRecord:", 176, kFatalMessage),
                                               cloudCheck("handleRecord:", 176, kFatalMessage)));
}

TEST_F(MyPushAdCloudManagerTest, withoutAContainerIdentifierItStaysSilent) {
  for (const auto& identifier : {std::optional<std::string>(), std::optional<std::string>("")}) {
    source_->setCloudContainerIdentifier(identifier);
    source_->downloadAdFileAsync();
    EXPECT_THAT(fakes_.log->takeLines(),
                ElementsAre(cloudCheck("prepareDatabaseIfNeeded", 91, kConfigurationMessage),
                            cloudCheck("prepareDatabaseIfNeeded", 108, kVerifyFailedMessage)));
  }
  fakes_.runLoop->advance(3600);
  EXPECT_THAT(delegate_->outcomes, IsEmpty());
  EXPECT_THAT(factory_->asked, IsEmpty());
}

TEST_F(MyPushAdCloudManagerTest, withoutAContainerItStaysSilent) {
  factory_->container = nullptr;
  source_->downloadAdFileAsync();
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(cloudCheck("prepareDatabaseIfNeeded", 103, kConfigurationMessage),
                          cloudCheck("prepareDatabaseIfNeeded", 108, kVerifyFailedMessage)));
  EXPECT_THAT(delegate_->outcomes, IsEmpty());
}

TEST_F(MyPushAdCloudManagerTest, withoutADatabaseItStaysSilent) {
  factory_->container->database = nullptr;
  source_->downloadAdFileAsync();
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(cloudCheck("prepareDatabaseIfNeeded", 99, kVerifyFailedMessage),
                          cloudCheck("prepareDatabaseIfNeeded", 108, kVerifyFailedMessage)));
  EXPECT_THAT(delegate_->outcomes, IsEmpty());
}

TEST_F(MyPushAdCloudManagerTest, aRunningQueryKeepsTheSourceAlive) {
  source_->downloadAdFileAsync();
  const std::weak_ptr<MyPushAdCloudManager> watch = source_;
  source_.reset();
  EXPECT_FALSE(watch.expired());
  complete(Records{recordWithFile("text")}, std::nullopt);
  EXPECT_THAT(delegate_->outcomes, ElementsAre("text text"));
}

TEST_F(MyPushAdCloudManagerTest, anOutcomeAndItsThreadWaitAsLongAsAMenuIsTracked) {
  for (const bool isError : {false, true}) {
    fakes_.runLoop->setTracksMenu(true);
    source_->downloadAdFileAsync();
    auto answer = std::move(database_->completions.back());
    std::atomic<bool> hasReturned = false;
    std::thread worker([&] {
      if (isError) {
        answer(std::nullopt, Error{"cloud", 7, "rate limited"});
      } else {
        answer(Records{recordWithFile("text")}, std::nullopt);
      }
      hasReturned = true;
    });
    EXPECT_TRUE(fakes_.runLoop->waitForWork(10));
    EXPECT_THAT(delegate_->outcomes, IsEmpty());
    EXPECT_FALSE(hasReturned);
    // The line does not wait with them.
    EXPECT_EQ(fakes_.log->takeLines(),
              isError ? std::vector{queryErrorLine("rate limited")} : std::vector<std::string>());
    fakes_.runLoop->setTracksMenu(false);
    fakes_.runLoop->runUntilIdle();
    worker.join();
    EXPECT_EQ(delegate_->outcomes.size(), 1U);
    delegate_->outcomes.clear();
  }
}

TEST_F(MyPushAdCloudManagerTest, aDelegateThatIsGoneHearsNothing) {
  source_->downloadAdFileAsync();
  const std::weak_ptr<OutcomeDelegate> gone = std::exchange(delegate_, nullptr);
  EXPECT_TRUE(gone.expired()) << "the source must hold its delegate weakly";
  EXPECT_EQ(source_->delegate(), nullptr);
  complete(Records{recordWithFile("text")}, std::nullopt);
  source_->downloadAdFileAsync();
  complete(std::nullopt, Error{"cloud", 7, "rate limited"});
}

TEST_F(MyPushAdCloudManagerTest, aDelegateMayLeaveEitherMethodOut) {
  const auto deaf = std::make_shared<MyPushAdDownloadDelegate>();
  source_->setDelegate(deaf);
  EXPECT_EQ(source_->delegate(), deaf);
  source_->downloadAdFileAsync();
  complete(Records{recordWithFile("text")}, std::nullopt);
  source_->downloadAdFileAsync();
  complete(Records(), std::nullopt);
}

TEST_F(MyPushAdCloudManagerTest, allocatesTheReceivingClass) {
  struct Special : MyPushAdCloudManager {};
  const std::shared_ptr<Special> source =
      MyPushAdCloudManager::createInstanceWithCloudContainerId<Special>("iCloud.com.example");
  EXPECT_EQ(source->cloudContainerIdentifier(), "iCloud.com.example");
}

TEST_F(MyPushAdCloudManagerTest, whatNobodyOwnsDoesNothingLater) {
  MyPushAdCloudManager source;
  source.setCloudContainerIdentifier("iCloud.com.example.ads");
  source.downloadAdFileAsync();
  source.retryDownloadAdFileWithDelay(1);
  fakes_.runLoop->advance(10);
  EXPECT_THAT(database_->queries, IsEmpty());
}

TEST_F(MyPushAdCloudManagerTest, aRetryKeepsItsSourceAlive) {
  source_->retryDownloadAdFileWithDelay(60);
  source_.reset();
  fakes_.runLoop->advance(60);
  EXPECT_EQ(database_->queries.size(), 1U);
}

TEST_F(MyPushAdCloudManagerTest, aRetryWaitsWhileAMenuIsTracked) {
  source_->retryDownloadAdFileWithDelay(60);
  fakes_.runLoop->setTracksMenu(true);
  fakes_.runLoop->advance(100);
  EXPECT_THAT(database_->queries, IsEmpty());
  fakes_.runLoop->setTracksMenu(false);
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(database_->queries.size(), 1U);
}

TEST_F(MyPushAdCloudManagerTest, retriesOnceAfterTheDelay) {
  source_->retryDownloadAdFileWithDelay(60);
  fakes_.runLoop->advance(59);
  EXPECT_THAT(database_->queries, IsEmpty());
  fakes_.runLoop->advance(600);
  EXPECT_EQ(database_->queries.size(), 1U);
}

}  // namespace
}  // namespace qorix
