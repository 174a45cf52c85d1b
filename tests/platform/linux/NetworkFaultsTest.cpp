// The real source over the real session, against a server that fails at every place.

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <random>

#include <qorix/MyPushAdWebServerManager.h>

#include "fakes/FakePlatform.h"
#include "platform/linux/CurlUrlSession.h"
#include "support/FaultyServer.h"
#include "support/LoopbackServer.h"
#include "support/Rounds.h"

namespace qorix::test {
namespace {

namespace fs = std::filesystem;

using Ending = FaultyServer::Ending;

constexpr const char* kDocument = "<push_ad_list/>";

struct CountedOutcomes : MyPushAdDownloadDelegate {
  void downloadFailedWithError(const Error& error) override {
    ++count;
    text.clear();
    code = error.code;
  }
  void downloadSuccessfullyWithString(const std::string& fetched) override {
    ++count;
    text = fetched;
  }

  int count = 0;
  std::int64_t code = 0;
  std::string text;
};

std::string answerWith(const std::string& headers, const std::string& body) {
  return "HTTP/1.1 200 OK\r\n" + headers + "\r\n" + body;
}

std::string lengthOf(const std::string& body) {
  return "Content-Length: " + std::to_string(body.size()) + "\r\n";
}

std::string plainAnswer() { return answerWith(lengthOf(kDocument), kDocument); }

std::string chunkedAnswer() {
  return answerWith("Transfer-Encoding: chunked\r\n", "5\r\n<push\r\na\r\n_ad_list/>\r\n0\r\n\r\n");
}

std::string compressedAnswer() {
  const std::string body = gzipped(kDocument);
  return answerWith("Content-Encoding: gzip\r\n" + lengthOf(body), body);
}

/// How many entries a folder of /proc/self has.
auto countOf(const char* folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

class NetworkFaultsTest : public ::testing::Test {
 protected:
  NetworkFaultsTest() {
    ::unsetenv("http_proxy");
    ::unsetenv("all_proxy");
    Platform services = fakes_.services();
    services.urlSessions =
        std::make_shared<CurlUrlSessionFactory>(CurlUrlSessionFactory::Options{0.1, 100'000});
    installPlatform(services);
    source_ = MyPushAdWebServerManager::createInstanceWithFileURLString(server_.url("/ad.xml"));
    source_->setDelegate(outcomes_);
  }

  /// One attempt, up to its only outcome.
  void attempt(FaultyServer::Answer answer) {
    {
      const std::lock_guard lock(mutex_);
      answer_ = std::move(answer);
    }
    const int before = outcomes_->count;
    source_->downloadAdFileAsync();
    ASSERT_TRUE(fakes_.runLoop->waitForWork(30)) << "no outcome";
    fakes_.runLoop->runUntilIdle();
    ASSERT_EQ(outcomes_->count, before + 1);
  }

  void expectFailure(FaultyServer::Answer answer) {
    attempt(std::move(answer));
    EXPECT_EQ(outcomes_->text, "");
  }

  /// At each byte of `answer`: never a part of the document, and afterwards the whole one.
  void failAtEachByte(const std::string& answer, Ending ending) {
    for (std::size_t size = 0; size < answer.size(); ++size) {
      SCOPED_TRACE("after byte " + std::to_string(size));
      attempt({answer.substr(0, size), ending});
      // The last bytes of a chunked answer come behind its document.
      EXPECT_TRUE(outcomes_->text.empty() ||
                  (outcomes_->text == kDocument && size + 5 > answer.size()))
          << outcomes_->text;
    }
    attempt({answer, Ending::cut});
    EXPECT_EQ(outcomes_->text, kDocument);
  }

  FakePlatform fakes_;
  FaultyServer::Answer answer_;
  std::mutex mutex_;  // guards answer_
  FaultyServer server_{[this](const std::string& /*path*/) {
    const std::lock_guard lock(mutex_);
    return answer_;
  }};
  std::shared_ptr<CountedOutcomes> outcomes_ = std::make_shared<CountedOutcomes>();
  std::shared_ptr<MyPushAdWebServerManager> source_;
};

TEST_F(NetworkFaultsTest, aCutAtAnyByteIsOneFailure) {
  for (const auto& answer : {plainAnswer(), chunkedAnswer(), compressedAnswer()}) {
    failAtEachByte(answer, Ending::cut);
  }
}

TEST_F(NetworkFaultsTest, aResetAtAnyByteIsOneFailure) {
  for (const auto& answer : {plainAnswer(), chunkedAnswer(), compressedAnswer()}) {
    for (std::size_t size = 0; size < answer.size(); ++size) {
      SCOPED_TRACE("after byte " + std::to_string(size));
      attempt({answer.substr(0, size), Ending::reset});
      EXPECT_TRUE(outcomes_->text.empty() || outcomes_->text == kDocument) << outcomes_->text;
    }
  }
}

TEST_F(NetworkFaultsTest, aStallAtAnyByteIsOneFailure) {
  for (const auto& answer : {plainAnswer(), chunkedAnswer(), compressedAnswer()}) {
    failAtEachByte(answer, Ending::stall);
  }
}

TEST_F(NetworkFaultsTest, aWrongLengthIsOneFailure) {
  for (const char* headers :
       {"Content-Length: 16\r\n", "Content-Length: -1\r\n", "Content-Length: 99999999999999\r\n",
        "Content-Length: 15\r\nContent-Length: 16\r\n"}) {
    SCOPED_TRACE(headers);
    expectFailure({answerWith(headers, kDocument)});
  }
}

TEST_F(NetworkFaultsTest, whatHasNoEndIsOneFailure) {
  const auto endless = [](const std::string& begin, const std::string& piece) {
    return FaultyServer::Answer{begin + piece, Ending::cut, true, begin.size()};
  };
  const std::string piece(1'000, 'x');
  expectFailure(endless("HTTP/1.1 200 OK\r\n", "X: " + piece + "\r\n"));
  expectFailure(endless("HTTP/1.1 200 OK\r\nX: ", piece));
  expectFailure(endless("", "HTTP/1.1 103 Early Hints\r\nX: " + piece + "\r\n\r\n"));
  expectFailure(endless(answerWith("", ""), piece));
  expectFailure(
      endless(answerWith("Transfer-Encoding: chunked\r\n", ""), "3e8\r\n" + piece + "\r\n"));
}

// 20 MB in some 20 kB.
TEST_F(NetworkFaultsTest, aBombIsOneFailure) {
  const std::string bomb = gzipped(std::string(20'000'000, ' '));
  ASSERT_LT(bomb.size(), 50'000U);
  expectFailure({answerWith("Content-Encoding: gzip\r\n" + lengthOf(bomb), bomb)});
}

TEST_F(NetworkFaultsTest, manyRandomFaultsLeaveNothingBehind) {
  const int many = rounds(500, 100'000);
  const unsigned seed = 20261122;
  std::mt19937 random(seed);
  const std::vector<std::string> answers{plainAnswer(), chunkedAnswer(), compressedAnswer()};
  expectFailure({""});
  const auto descriptors = countOf("/proc/self/fd");
  const auto threads = countOf("/proc/self/task");
  int whole = 0;
  for (int round = 0; round < many; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    std::string bytes = answers[random() % answers.size()];
    if (random() % 2 == 0) {
      bytes[random() % bytes.size()] = static_cast<char>(random() % 256);
    }
    bytes.resize(random() % (bytes.size() + 1));
    ASSERT_NO_FATAL_FAILURE(attempt({bytes, random() % 2 == 0 ? Ending::cut : Ending::reset}));
    whole += outcomes_->text.empty() ? 0 : 1;
  }
  std::printf("seed %u: %d attempts, %d with a text\n", seed, many, whole);
  EXPECT_EQ(outcomes_->count, many + 1);
  // The server may still be closing its last connection.
  EXPECT_LE(countOf("/proc/self/fd"), descriptors + 2);
  EXPECT_LE(countOf("/proc/self/task"), threads);
}

}  // namespace
}  // namespace qorix::test
