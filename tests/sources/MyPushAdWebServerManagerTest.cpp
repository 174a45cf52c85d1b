#include <gmock/gmock.h>

#include <qorix/MyPushAdWebServerManager.h>

#include "fakes/FakePlatform.h"

namespace qorix {
namespace {

using ::testing::DoubleEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSourceAddress = "https://ads.example.com/commonad.xml";

struct TextDelegate : MyPushAdDownloadDelegate {
  void downloadFailedWithError(const Error& error) override { errors.push_back(error); }
  void downloadSuccessfullyWithString(const std::string& text) override { texts.push_back(text); }

  std::vector<Error> errors;
  std::vector<std::string> texts;
};

class MyPushAdWebServerManagerTest : public ::testing::Test {
 protected:
  MyPushAdWebServerManagerTest() { installPlatform(fakes_.services()); }

  std::shared_ptr<MyPushAdWebServerManager> makeSource(
      std::optional<std::string> address = kSourceAddress) {
    auto source = MyPushAdWebServerManager::createInstanceWithFileURLString(std::move(address));
    source->setDelegate(delegate_);
    return source;
  }

  FakeUrlSession& session() { return *fakes_.urlSessions->sessions.front(); }

  void expectOneNoTextError() {
    ASSERT_EQ(delegate_->errors.size(), 1U);
    EXPECT_EQ(delegate_->errors[0].domain, "Custom Error: MyWebServer download file failed");
    EXPECT_EQ(delegate_->errors[0].code, 1);
    EXPECT_EQ(delegate_->errors[0].description, "");
    EXPECT_THAT(delegate_->texts, IsEmpty());
  }

  FakePlatform fakes_;
  std::shared_ptr<TextDelegate> delegate_ = std::make_shared<TextDelegate>();
};

TEST_F(MyPushAdWebServerManagerTest, makesOneSessionAndUsesItForEveryAttempt) {
  const auto source = makeSource();
  source->downloadAdFileAsync();
  session().complete();
  source->downloadAdFileAsync();
  EXPECT_EQ(fakes_.urlSessions->sessions.size(), 1U);
  EXPECT_THAT(session().startedUrls, ElementsAre(kSourceAddress, kSourceAddress));
}

TEST_F(MyPushAdWebServerManagerTest, reportsTheTextOnALaterPassOfTheMainLoop) {
  const auto source = makeSource();
  source->downloadAdFileAsync();
  session().deliver("text");
  session().complete();
  EXPECT_THAT(delegate_->texts, IsEmpty());
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate_->texts, ElementsAre("text"));
  EXPECT_THAT(delegate_->errors, IsEmpty());
}

TEST_F(MyPushAdWebServerManagerTest, joinsChunksInOrderBeforeDecoding) {
  const auto source = makeSource();
  source->downloadAdFileAsync();
  session().deliver("caf\xC3");
  session().deliver("\xA9 au lait");
  session().complete();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate_->texts, ElementsAre("caf\xC3\xA9 au lait"));
}

TEST_F(MyPushAdWebServerManagerTest, failsOnAnEmptyBody) {
  const auto source = makeSource();
  source->downloadAdFileAsync();
  session().complete();
  fakes_.runLoop->runUntilIdle();
  expectOneNoTextError();
}

TEST_F(MyPushAdWebServerManagerTest, failsOnABodyThatIsNotUtf8) {
  const auto source = makeSource();
  source->downloadAdFileAsync();
  session().deliver("caf\xE9");
  session().complete();
  fakes_.runLoop->runUntilIdle();
  expectOneNoTextError();
}

TEST_F(MyPushAdWebServerManagerTest, passesTheTransportsErrorOnEvenAfterData) {
  const auto source = makeSource();
  source->downloadAdFileAsync();
  session().deliver("half of");
  session().complete(Error{"curl", 18, "transfer closed"});
  fakes_.runLoop->runUntilIdle();
  ASSERT_EQ(delegate_->errors.size(), 1U);
  EXPECT_EQ(delegate_->errors[0].domain, "curl");
  EXPECT_EQ(delegate_->errors[0].code, 18);
  EXPECT_THAT(delegate_->texts, IsEmpty());
}

TEST_F(MyPushAdWebServerManagerTest, startsEachAttemptFromNothing) {
  const auto source = makeSource();
  source->downloadAdFileAsync();
  session().deliver("stale");
  session().complete(Error{"curl", 18, ""});
  source->downloadAdFileAsync();
  session().deliver("fresh");
  session().complete();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate_->texts, ElementsAre("fresh"));
}

TEST_F(MyPushAdWebServerManagerTest, staysSilentWithoutAnAddress) {
  const auto source = makeSource(std::nullopt);
  source->downloadAdFileAsync();
  fakes_.runLoop->advance(1000);
  EXPECT_THAT(session().startedUrls, IsEmpty());
  EXPECT_THAT(delegate_->errors, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdWebServerManagerTest, staysSilentWhenTheAddressIsMalformed) {
  for (const char* address :
       {"", " ", "https://ads.example.com/common ad.xml", "https://a.b/[x]", "https://a.b/%zz"}) {
    const auto source = makeSource(address);
    source->downloadAdFileAsync();
    fakes_.runLoop->advance(1000);
    EXPECT_THAT(fakes_.urlSessions->sessions.back()->startedUrls, IsEmpty()) << address;
  }
  EXPECT_THAT(delegate_->errors, IsEmpty());
  EXPECT_THAT(delegate_->texts, IsEmpty());
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), IsEmpty());
}

TEST_F(MyPushAdWebServerManagerTest, fetchesWhatIsWellFormedWhetherThatCanBeOrNot) {
  for (const char* address : {"commonad.xml", "https://", "http:///commonad.xml", "//a.b/c"}) {
    delegate_->errors.clear();
    const auto source = makeSource(address);
    source->downloadAdFileAsync();
    auto& session = *fakes_.urlSessions->sessions.back();
    EXPECT_THAT(session.startedUrls, ElementsAre(address));
    session.complete(Error{"curl", 3, "no host"});
    fakes_.runLoop->runUntilIdle();
    ASSERT_EQ(delegate_->errors.size(), 1U);
    EXPECT_EQ(delegate_->errors[0].domain, "curl");
  }
}

TEST_F(MyPushAdWebServerManagerTest, overlappingAttemptsShareWhatHasArrivedSinceTheLastBegan) {
  const auto source = makeSource();
  source->downloadAdFileAsync();
  session().deliver("lost ");
  source->downloadAdFileAsync();
  session().deliver("first ");
  session().complete();
  session().deliver("second");
  session().complete();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate_->texts, ElementsAre("first ", "first second"));
}

TEST_F(MyPushAdWebServerManagerTest, theOutcomeDoesNotWaitForAMenu) {
  const auto source = makeSource();
  fakes_.runLoop->setTracksMenu(true);
  source->downloadAdFileAsync();
  session().deliver("text");
  session().complete();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate_->texts, ElementsAre("text"));
}

// A released source.

TEST_F(MyPushAdWebServerManagerTest, aSourceReleasedInMidTransferEndsItsAttempt) {
  auto source = makeSource();
  source->downloadAdFileAsync();
  session().deliver("te");
  const std::weak_ptr<MyPushAdWebServerManager> watch = source;
  source.reset();
  session().deliver("xt");
  session().complete();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(delegate_->texts, ElementsAre("text"));
  EXPECT_TRUE(watch.expired());
}

TEST_F(MyPushAdWebServerManagerTest, anOutcomeOnItsWayKeepsItsSourceAlive) {
  for (const auto& error : {std::optional<Error>(), std::optional(Error{"curl", 18, "cut"})}) {
    auto source = makeSource();
    source->downloadAdFileAsync();
    auto& its = *fakes_.urlSessions->sessions.back();
    its.deliver("text");
    its.complete(error);
    source.reset();
    fakes_.runLoop->runUntilIdle();
  }
  EXPECT_THAT(delegate_->texts, ElementsAre("text"));
  ASSERT_EQ(delegate_->errors.size(), 1U);
  EXPECT_EQ(delegate_->errors[0].description, "cut");
}

TEST_F(MyPushAdWebServerManagerTest, aRetryKeepsItsSourceAlive) {
  auto source = makeSource();
  source->retryDownloadAdFileWithDelay(60);
  source.reset();
  fakes_.runLoop->advance(60);
  EXPECT_THAT(session().startedUrls, ElementsAre(kSourceAddress));
}

// A source of another make.

TEST_F(MyPushAdWebServerManagerTest, withoutASessionItStaysSilent) {
  const auto source = std::make_shared<MyPushAdWebServerManager>();
  EXPECT_EQ(source->fileUrlString(), std::nullopt);
  EXPECT_EQ(source->delegate(), nullptr);
  source->setDelegate(delegate_);
  source->setFileUrlString(kSourceAddress);
  source->downloadAdFileAsync();
  source->retryDownloadAdFileWithDelay(1);
  fakes_.runLoop->advance(10);
  EXPECT_THAT(delegate_->errors, IsEmpty());
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(MyPushAdWebServerManagerTest, aPlatformWithoutSessionsIsSilent) {
  struct NoSessions : UrlSessionFactory {
    std::shared_ptr<UrlSession> createEphemeralSession(
        std::weak_ptr<UrlSessionDelegate> /*delegate*/) override {
      return nullptr;
    }
  };
  auto services = fakes_.services();
  services.urlSessions = std::make_shared<NoSessions>();
  installPlatform(std::move(services));
  makeSource()->downloadAdFileAsync();
  fakes_.runLoop->advance(10);
  EXPECT_THAT(delegate_->errors, IsEmpty());
}

TEST_F(MyPushAdWebServerManagerTest, aBodyBeforeTheFirstAttemptIsNone) {
  const auto source = makeSource();
  session().deliver("text");
  session().complete();
  fakes_.runLoop->runUntilIdle();
  expectOneNoTextError();
}

TEST_F(MyPushAdWebServerManagerTest, whatNobodyOwnsDoesNothingLater) {
  MyPushAdWebServerManager source;
  source.setDelegate(delegate_);
  source.setFileUrlString(kSourceAddress);
  source.downloadAdFileAsync();
  source.retryDownloadAdFileWithDelay(1);
  source.urlSessionDidCompleteWithError(std::nullopt);
  fakes_.runLoop->advance(10);
  EXPECT_THAT(delegate_->errors, IsEmpty());
}

TEST_F(MyPushAdWebServerManagerTest, retriesExactlyOnceAfterTheDelay) {
  const auto source = makeSource();
  source->retryDownloadAdFileWithDelay(60);
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), ElementsAre(DoubleEq(60)));
  fakes_.runLoop->advance(59.9);
  EXPECT_THAT(session().startedUrls, IsEmpty());
  fakes_.runLoop->advance(0.2);
  EXPECT_THAT(session().startedUrls, ElementsAre(kSourceAddress));
  fakes_.runLoop->advance(600);
  EXPECT_EQ(session().startedUrls.size(), 1U);
}

TEST_F(MyPushAdWebServerManagerTest, retryWaitsWhileAMenuIsTracked) {
  const auto source = makeSource();
  source->retryDownloadAdFileWithDelay(60);
  fakes_.runLoop->setTracksMenu(true);
  fakes_.runLoop->advance(100);
  EXPECT_THAT(session().startedUrls, IsEmpty());
  fakes_.runLoop->setTracksMenu(false);
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(session().startedUrls.size(), 1U);
}

TEST_F(MyPushAdWebServerManagerTest, dropsTheOutcomeWhenTheDelegateIsGone) {
  const auto source = makeSource();
  source->downloadAdFileAsync();
  session().deliver("text");
  session().complete();
  const std::weak_ptr<TextDelegate> gone = std::exchange(delegate_, nullptr);
  EXPECT_TRUE(gone.expired()) << "the source must hold its delegate weakly";
  fakes_.runLoop->runUntilIdle();
  source->downloadAdFileAsync();
  session().complete(Error{"curl", 18, "cut"});
  fakes_.runLoop->runUntilIdle();
  EXPECT_EQ(source->delegate(), nullptr);
}

TEST_F(MyPushAdWebServerManagerTest, skipsADelegateThatLacksTheMethod) {
  const auto source = makeSource();
  struct HearsFailuresOnly : MyPushAdDownloadDelegate {
    void downloadFailedWithError(const Error& error) override { codes.push_back(error.code); }
    std::vector<std::int64_t> codes;
  };
  const auto partial = std::make_shared<HearsFailuresOnly>();
  source->setDelegate(partial);
  source->downloadAdFileAsync();
  session().deliver("text");
  session().complete();
  source->downloadAdFileAsync();
  session().complete();
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(partial->codes, ElementsAre(1));
}

TEST_F(MyPushAdWebServerManagerTest, allocatesTheReceivingClass) {
  struct Special : MyPushAdWebServerManager {};
  const std::shared_ptr<Special> source =
      MyPushAdWebServerManager::createInstanceWithFileURLString<Special>(kSourceAddress);
  EXPECT_EQ(source->fileUrlString(), kSourceAddress);
}

}  // namespace
}  // namespace qorix
