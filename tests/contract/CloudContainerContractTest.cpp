#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <ostream>
#include <thread>

#include "fakes/FakeCloudContainer.h"
#include "platform/linux/CloudKitContainers.h"
#include "support/CloudServer.h"
#include "support/QueryOutcome.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

/// One kind of container together with the service behind it.
class ContainerRig {
 public:
  virtual ~ContainerRig() = default;
  virtual std::shared_ptr<CloudContainer> container() = 0;
  virtual void publish(const std::string& text) = 0;
  /// From now on queries fail.
  virtual void breakDown() = 0;
  /// Lets the query that has been performed come to its end.
  virtual void serve() {}
};

class CloudKitRig : public ContainerRig {
 public:
  std::shared_ptr<CloudContainer> container() override {
    return CloudKitContainerFactory(
               {.serviceAddress = server_.server().url(""), .apiToken = CloudServer::kToken})
        .containerWithIdentifier(CloudServer::kContainer);
  }
  void publish(const std::string& text) override { server_.addAdFile(text); }
  void breakDown() override { server_.setAnswer({.status = 503, .body = {"down"}}); }

 private:
  CloudServer server_;
};

class FakeContainerRig : public ContainerRig {
 public:
  FakeContainerRig() {
    factory_.container = std::make_shared<FakeCloudContainer>();
    factory_.container->database = database_;
  }
  ~FakeContainerRig() override {
    for (auto& worker : workers_) {
      worker.join();
    }
  }
  std::shared_ptr<CloudContainer> container() override {
    return factory_.containerWithIdentifier(CloudServer::kContainer);
  }
  void publish(const std::string& text) override {
    const auto path = folder_ / std::to_string(++files_);
    std::ofstream(path, std::ios::binary) << text;
    records_.push_back(std::make_shared<FakeCloudRecord>(
        Dictionary{{"filename", "commonad"},
                   {"filecontents", std::make_shared<FakeCloudAsset>(Url::fileUrl(path))}}));
  }
  void breakDown() override { error_ = Error{"fake", 503, "down"}; }
  void serve() override {
    using Records = std::vector<std::shared_ptr<CloudRecord>>;
    workers_.push_back(
        database_->answer(error_ ? std::nullopt : std::optional<Records>(records_), error_));
  }

 private:
  TemporaryFolder folder_;
  FakeCloudContainerFactory factory_;
  std::shared_ptr<FakeCloudDatabase> database_ = std::make_shared<FakeCloudDatabase>();
  std::vector<std::shared_ptr<CloudRecord>> records_;
  std::optional<Error> error_;
  std::vector<std::thread> workers_;
  int files_ = 0;
};

struct ContainerImplementation {
  const char* name;
  std::function<std::unique_ptr<ContainerRig>()> make;

  friend void PrintTo(const ContainerImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

/// What every container does.
class CloudContainerContractTest : public ::testing::TestWithParam<ContainerImplementation> {
 protected:
  std::optional<QueryOutcome> outcome() {
    PendingQuery query;
    rig_->container()->publicCloudDatabase()->performQuery(CloudServer::adFileQuery(),
                                                           query.completion());
    rig_->serve();
    return query.wait();
  }

  std::unique_ptr<ContainerRig> rig_ = GetParam().make();
};

TEST_P(CloudContainerContractTest, anOutcomeIsEitherRecordsOrAnError) {
  rig_->publish("text");
  const auto records = outcome();
  ASSERT_TRUE(records && records->records);
  EXPECT_EQ(records->records->size(), 1U);
  EXPECT_FALSE(records->error);
  rig_->breakDown();
  const auto error = outcome();
  ASSERT_TRUE(error && error->error);
  EXPECT_FALSE(error->records);
  EXPECT_NE(error->error->description, "");
}

TEST_P(CloudContainerContractTest, noMatchIsAnEmptyResult) {
  const auto result = outcome();
  ASSERT_TRUE(result && result->records);
  EXPECT_TRUE(result->records->empty());
}

TEST_P(CloudContainerContractTest, outcomesArriveOnAnotherThread) {
  const auto result = outcome();
  ASSERT_TRUE(result);
  EXPECT_NE(result->thread, std::this_thread::get_id());
}

TEST_P(CloudContainerContractTest, theLastRecordHasItsFile) {
  rig_->publish("first");
  rig_->publish("last");
  const auto result = outcome();
  ASSERT_TRUE(result && result->records);
  ASSERT_EQ(result->records->size(), 2U);
  const CloudRecord& last = *result->records->back();
  const auto asset = last.objectForKey("filecontents").object<CloudAsset>();
  ASSERT_TRUE(asset != nullptr && asset->fileUrl());
  std::ifstream file(asset->fileUrl()->filePath().value_or(""));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "last");
  EXPECT_EQ(last.objectForKey("filename").description(), "commonad");
  EXPECT_TRUE(last.objectForKey("no such field").isNull());
}

TEST_P(CloudContainerContractTest, aQueryOutlivesItsContainer) {
  rig_->publish("text");
  PendingQuery query;
  {
    const auto container = rig_->container();
    container->publicCloudDatabase()->performQuery(CloudServer::adFileQuery(), query.completion());
  }
  rig_->serve();
  const auto result = query.wait();
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->records);
}

INSTANTIATE_TEST_SUITE_P(
    , CloudContainerContractTest,
    ::testing::Values(
        ContainerImplementation{"CloudKit", [] { return std::make_unique<CloudKitRig>(); }},
        ContainerImplementation{"Fake", [] { return std::make_unique<FakeContainerRig>(); }}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace qorix
