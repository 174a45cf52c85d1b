#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <ostream>

#include "fakes/FakeUrlSession.h"
#include "platform/linux/CurlUrlSession.h"
#include "support/LoopbackServer.h"
#include "support/RecordingUrlSessionDelegate.h"

namespace qorix {
namespace {

/// One kind of session together with the other side of its network.
class SessionRig {
 public:
  virtual ~SessionRig() = default;
  virtual UrlSessionFactory& factory() = 0;
  /// Starts a task that gets `body` and then ends well.
  virtual void fetch(UrlSession& session, const std::string& body) = 0;
  /// Starts a task that gets `body` and then ends with an error.
  virtual void fetchInVain(UrlSession& session, const std::string& body) = 0;
};

class CurlRig : public SessionRig {
 public:
  CurlRig() {
    for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"}) {
      ::unsetenv(name);
    }
  }
  UrlSessionFactory& factory() override { return factory_; }
  void fetch(UrlSession& session, const std::string& body) override {
    start(session, {.body = {body}});
  }
  void fetchInVain(UrlSession& session, const std::string& body) override {
    start(session, {.body = {body}, .ending = LoopbackServer::Ending::cut});
  }

 private:
  void start(UrlSession& session, const LoopbackServer::Answer& answer) {
    const std::string path = "/" + std::to_string(++count_);
    server_.setAnswer(path, answer);
    session.startDataTask(*Url::parse(server_.url(path)));
  }

  LoopbackServer server_;
  CurlUrlSessionFactory factory_;
  int count_ = 0;
};

class FakeSessionRig : public SessionRig {
 public:
  UrlSessionFactory& factory() override { return factory_; }
  void fetch(UrlSession& session, const std::string& body) override {
    run(session, body, std::nullopt);
  }
  void fetchInVain(UrlSession& session, const std::string& body) override {
    run(session, body, Error{"fake", 18, "cut"});
  }

 private:
  static void run(UrlSession& session, const std::string& body, const std::optional<Error>& error) {
    session.startDataTask(*Url::parse("http://127.0.0.1/"));
    auto& fake = static_cast<FakeUrlSession&>(session);
    if (!body.empty()) {
      fake.deliver(body);
    }
    fake.complete(error);
  }

  FakeUrlSessionFactory factory_;
};

struct SessionImplementation {
  const char* name;
  std::function<std::unique_ptr<SessionRig>()> make;

  friend void PrintTo(const SessionImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

/// What every session does.
class UrlSessionContractTest : public ::testing::TestWithParam<SessionImplementation> {
 protected:
  UrlSessionContractTest()
      : rig_(GetParam().make()), session_(rig_->factory().createEphemeralSession(delegate_)) {}

  std::shared_ptr<RecordingUrlSessionDelegate> delegate_ =
      std::make_shared<RecordingUrlSessionDelegate>();
  std::unique_ptr<SessionRig> rig_;
  std::shared_ptr<UrlSession> session_;
};

TEST_P(UrlSessionContractTest, deliversTheBodyAndThenTheEnd) {
  std::string bodyAtTheEnd;
  auto* delegate = delegate_.get();
  delegate_->onCompletion = [&bodyAtTheEnd, delegate] { bodyAtTheEnd = delegate->body(); };
  rig_->fetch(*session_, "<push_ad_list/>");
  ASSERT_TRUE(delegate_->waitForOutcomes());
  EXPECT_EQ(bodyAtTheEnd, "<push_ad_list/>");
  EXPECT_FALSE(delegate_->outcomes()[0].has_value());
  EXPECT_EQ(delegate_->pieces(), 1U);
}

TEST_P(UrlSessionContractTest, anEmptyBodyBringsTheEndAlone) {
  rig_->fetch(*session_, "");
  ASSERT_TRUE(delegate_->waitForOutcomes());
  EXPECT_EQ(delegate_->pieces(), 0U);
  EXPECT_FALSE(delegate_->outcomes()[0].has_value());
}

TEST_P(UrlSessionContractTest, aFailureIsOneErrorAfterWhatHasArrived) {
  rig_->fetchInVain(*session_, "half");
  ASSERT_TRUE(delegate_->waitForOutcomes());
  EXPECT_EQ(delegate_->body(), "half");
  ASSERT_TRUE(delegate_->outcomes()[0].has_value());
  EXPECT_EQ(delegate_->outcomes()[0]->code, 18);
  EXPECT_NE(delegate_->outcomes()[0]->domain, "");
}

TEST_P(UrlSessionContractTest, everyTaskHasItsOwnEnd) {
  rig_->fetch(*session_, "a");
  ASSERT_TRUE(delegate_->waitForOutcomes(1));
  rig_->fetchInVain(*session_, "b");
  ASSERT_TRUE(delegate_->waitForOutcomes(2));
  rig_->fetch(*session_, "c");
  ASSERT_TRUE(delegate_->waitForOutcomes(3));
  EXPECT_EQ(delegate_->body(), "abc");
  EXPECT_FALSE(delegate_->outcomes()[0].has_value());
  EXPECT_TRUE(delegate_->outcomes()[1].has_value());
  EXPECT_FALSE(delegate_->outcomes()[2].has_value());
}

TEST_P(UrlSessionContractTest, doesNotKeepItsDelegateAlive) {
  const std::weak_ptr<RecordingUrlSessionDelegate> watch = delegate_;
  delegate_.reset();
  EXPECT_TRUE(watch.expired());
  rig_->fetch(*session_, "nobody hears of it");
}

INSTANTIATE_TEST_SUITE_P(
    , UrlSessionContractTest,
    ::testing::Values(SessionImplementation{"Curl", [] { return std::make_unique<CurlRig>(); }},
                      SessionImplementation{"Fake",
                                            [] { return std::make_unique<FakeSessionRig>(); }}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace qorix
