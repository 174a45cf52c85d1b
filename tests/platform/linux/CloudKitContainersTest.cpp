#include <curl/curl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <limits>
#include <new>
#include <nlohmann/json.hpp>

#include <qorix/platform/Platform.h>

#include "fakes/FakeRunLoop.h"
#include "fakes/RecordingLog.h"
#include "platform/linux/CloudKitContainers.h"
#include "support/CloudServer.h"
#include "support/NoThreads.h"
#include "support/QueryOutcome.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

using Answer = LoopbackServer::Answer;
using Ending = LoopbackServer::Ending;
using Security = LoopbackServer::Security;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using namespace std::string_literals;

std::shared_ptr<CloudAsset> assetOf(const std::shared_ptr<CloudRecord>& record) {
  return record->objectForKey("filecontents").object<CloudAsset>();
}

std::string pathOf(const CloudAsset& asset) { return asset.fileUrl().value().filePath().value(); }

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Files may grow to `size` bytes as long as the object lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(::rlim_t size) {
    std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const ::rlimit limit{size, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  ::rlimit before_{};
};

/// The files without a name that this process holds open.
std::vector<std::string> namelessFiles() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    const auto target = std::filesystem::read_symlink(entry.path(), gone).string();
    if (target.find("/qorix-") != target.npos && target.ends_with(" (deleted)")) {
      files.push_back(entry.path());
    }
  }
  return files;
}

class CloudKitContainersTest : public ::testing::Test {
 public:
  ~CloudKitContainersTest() override { ::setenv("TMPDIR", outerFolder_.c_str(), 1); }

 protected:
  CloudKitContainersTest() {
    for (const char* name :
         {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
      ::unsetenv(name);
    }
    outerFolder_ = std::filesystem::temp_directory_path();
    ::setenv("TMPDIR", folder_.path().c_str(), 1);
    Platform services = nullPlatform();
    services.log = log_;
    installPlatform(std::move(services));
    options_.serviceAddress = cloud_.server().url("");
    options_.apiToken = CloudServer::kToken;
  }

  QueryOutcome query() {
    const auto container =
        CloudKitContainerFactory(options_).containerWithIdentifier(CloudServer::kContainer);
    if (container == nullptr) {
      ADD_FAILURE() << "no container";
      return {};
    }
    PendingQuery pending;
    container->publicCloudDatabase()->performQuery(CloudServer::adFileQuery(),
                                                   pending.completion());
    auto outcome = pending.wait();
    EXPECT_TRUE(outcome.has_value());
    return outcome.value_or(QueryOutcome());
  }

  std::vector<std::shared_ptr<CloudRecord>> records() {
    const auto outcome = query();
    EXPECT_FALSE(outcome.error) << outcome.error->description;
    return outcome.records.value_or(std::vector<std::shared_ptr<CloudRecord>>());
  }

  Error error() {
    const auto outcome = query();
    EXPECT_FALSE(outcome.records);
    return outcome.error.value_or(Error{"none", 0, ""});
  }

  Error errorAfter(int status, const std::string& body) {
    cloud_.setAnswer({.status = status, .body = {body}});
    return error();
  }

  /// The outcome of a query of another queue.
  std::optional<QueryOutcome> outcomeOf(CloudServer& other) {
    auto options = options_;
    options.serviceAddress = other.server().url("");
    PendingQuery query;
    CloudKitContainerFactory(options)
        .containerWithIdentifier(CloudServer::kContainer)
        ->publicCloudDatabase()
        ->performQuery(CloudServer::adFileQuery(), query.completion());
    return query.wait();
  }

  void queryThatTakesTheIdleLimit(CloudServer& silent) {
    const auto outcome = outcomeOf(silent);
    EXPECT_TRUE(outcome && outcome->error);
  }

  void expectError(const Error& error, const std::string& domain, int code,
                   const std::string& description) {
    EXPECT_EQ(error.domain, domain);
    EXPECT_EQ(error.code, code);
    EXPECT_THAT(error.description, HasSubstr(description));
    EXPECT_NE(error.description, "");
  }

  const TemporaryFolder folder_;
  std::string outerFolder_;
  const std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
  CloudServer cloud_;
  CloudKitContainerFactory::Options options_;
};

// The request.

TEST_F(CloudKitContainersTest, postsTheQueryWithTheToken) {
  EXPECT_THAT(records(), IsEmpty());
  ASSERT_EQ(cloud_.server().requests().size(), 1U);
  const auto request = cloud_.server().requests()[0];
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.target,
            "/database/1/iCloud.com.example.ads/production/public/records/query"
            "?ckAPIToken=a%2Btoken%2Fwith%3Dsigns");
  EXPECT_EQ(request.header("content-type"), "application/json");
  EXPECT_EQ(request.header("cookie"), "");
  EXPECT_EQ(nlohmann::json::parse(request.body), nlohmann::json::parse(R"({
    "zoneID": {"zoneName": "_defaultZone"},
    "query": {
      "recordType": "macadfiles",
      "filterBy": [{"comparator": "EQUALS", "fieldName": "filename",
                    "fieldValue": {"value": "commonad", "type": "STRING"}}]
    }
  })"));
}

TEST_F(CloudKitContainersTest, theServersOwnErrorsSayWhatWasWrong) {
  options_.apiToken = "another token";
  expectError(error(), "CloudKit", 401, "AUTHENTICATION_FAILED: unknown API token");
  options_.apiToken = CloudServer::kToken;
  options_.environment = "development";
  expectError(error(), "CloudKit", 404, "NOT_FOUND: there is no such container");
}

TEST_F(CloudKitContainersTest, theEnvironmentIsPartOfTheAddress) {
  CloudServer development(Security::plain, "development");
  development.addAdFile("text");
  // Neither a slash at the end nor capitals do any harm.
  options_.serviceAddress = development.server().url("/", "HTTP");
  options_.environment = "development";
  EXPECT_EQ(records().size(), 1U);
}

TEST_F(CloudKitContainersTest, theContainersNameIsEscaped) {
  const auto container =
      CloudKitContainerFactory(options_).containerWithIdentifier("iCloud.a/b?c d\u00E9");
  ASSERT_NE(container, nullptr);
  PendingQuery pending;
  container->publicCloudDatabase()->performQuery(CloudServer::adFileQuery(), pending.completion());
  ASSERT_TRUE(pending.wait());
  EXPECT_THAT(cloud_.server().requests().at(0).target,
              HasSubstr("/1/iCloud.a%2Fb%3Fc%20d%C3%A9/production/"));
}

// Whoever gives it cannot add a line to the request, or another parameter.
TEST_F(CloudKitContainersTest, theTokenIsEscaped) {
  options_.apiToken = "a\r\nInjected: b\r\n\r\n&c=d#e /../f";
  const auto container =
      CloudKitContainerFactory(options_).containerWithIdentifier("iCloud.com.example.ads");
  ASSERT_NE(container, nullptr);
  PendingQuery pending;
  container->publicCloudDatabase()->performQuery(CloudServer::adFileQuery(), pending.completion());
  ASSERT_TRUE(pending.wait());
  const auto requests = cloud_.server().requests();
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_THAT(requests[0].target,
              EndsWith("?ckAPIToken=a%0D%0AInjected%3A%20b%0D%0A%0D%0A%26c%3Dd%23e%20%2F..%2Ff"));
  EXPECT_EQ(requests[0].headers.count("Injected"), 0U);
}

// Containers that cannot be made.

TEST_F(CloudKitContainersTest, withoutATokenThereIsNoContainer) {
  options_.apiToken = "";
  EXPECT_EQ(CloudKitContainerFactory(options_).containerWithIdentifier("iCloud.com.example"),
            nullptr);
  EXPECT_THAT(log_->lines(), IsEmpty());
}

TEST_F(CloudKitContainersTest, anAddressThatIsNoneIsLogged) {
  for (const char* address :
       {"", "api.apple-cloudkit.com", "ftp://127.0.0.1", "https://a b", "https://", "https:///path",
        "https:path", "//127.0.0.1", "https://127.0.0.1/?query", "https://127.0.0.1/#fragment"}) {
    options_.serviceAddress = address;
    EXPECT_EQ(CloudKitContainerFactory(options_).containerWithIdentifier("iCloud.com.example"),
              nullptr);
    EXPECT_THAT(log_->takeLines(), ElementsAre("The cloud service's address cannot be used: " +
                                               options_.serviceAddress));
  }
}

TEST_F(CloudKitContainersTest, anUnknownEnvironmentIsLogged) {
  options_.environment = "staging";
  EXPECT_EQ(CloudKitContainerFactory(options_).containerWithIdentifier("iCloud.com.example"),
            nullptr);
  EXPECT_THAT(log_->lines(),
              ElementsAre("The cloud environment is neither development nor production: staging"));
}

TEST_F(CloudKitContainersTest, thePublicServiceInProductionIsTheDefault) {
  const CloudKitContainerFactory::Options defaults;
  EXPECT_EQ(defaults.serviceAddress, "https://api.apple-cloudkit.com");
  EXPECT_EQ(defaults.environment, "production");
  EXPECT_EQ(defaults.http.idleLimitSeconds, 60);
}

TEST_F(CloudKitContainersTest, makingAContainerSendsNothing) {
  const auto container =
      CloudKitContainerFactory(options_).containerWithIdentifier(CloudServer::kContainer);
  ASSERT_NE(container, nullptr);
  EXPECT_NE(container->publicCloudDatabase(), nullptr);
  EXPECT_THAT(cloud_.server().requests(), IsEmpty());
}

// Records.

TEST_F(CloudKitContainersTest, everyPageIsFollowedInOrder) {
  for (int i = 1; i <= 7; ++i) {
    cloud_.addRecord({.type = "macadfiles",
                      .texts = {{"filename", "commonad"}, {"number", std::to_string(i)}},
                      .assets = {}});
  }
  cloud_.setPageSize(3);
  const auto all = records();
  ASSERT_EQ(all.size(), 7U);
  for (std::size_t i = 0; i < all.size(); ++i) {
    EXPECT_EQ(all[i]->objectForKey("number").description(), std::to_string(i + 1));
  }
  EXPECT_EQ(cloud_.queries(), 3);
}

TEST_F(CloudKitContainersTest, recordsOfOtherTypesAndNamesAreLeftOut) {
  cloud_.addRecord({.type = "iosadfiles", .texts = {{"filename", "commonad"}}, .assets = {}});
  cloud_.addRecord({.type = "macadfiles", .texts = {{"filename", "other"}}, .assets = {}});
  EXPECT_THAT(records(), IsEmpty());
}

TEST_F(CloudKitContainersTest, onlyTheLastRecordsAssetIsFetched) {
  cloud_.addAdFile({.status = 404, .body = {"gone"}}, 4);
  cloud_.addAdFile("last");
  const auto all = records();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(assetOf(all[0])->fileUrl(), std::nullopt);
  EXPECT_EQ(contents(pathOf(*assetOf(all[1]))), "last");
  EXPECT_EQ(cloud_.downloads(), 1);
}

TEST_F(CloudKitContainersTest, fieldsHaveTheirTypes) {
  cloud_.setAnswer({.body = {R"({"records": [{"recordName": "a", "fields": {
      "text": {"value": "t", "type": "STRING"}, "untyped": {"value": "u"},
      "whole": {"value": -3, "type": "INT64"}, "large": {"value": 18446744073709551615},
      "part": {"value": 2.5, "type": "DOUBLE"}, "flag": {"value": true},
      "list": {"value": ["a"], "type": "STRING_LIST"}, "none": {"type": "STRING"}, "odd": 1,
      "filecontents": {"value": "a text", "type": "STRING"}}}]})"}});
  const auto all = records();
  ASSERT_EQ(all.size(), 1U);
  const auto value = [&](const char* name) { return all[0]->objectForKey(name); };
  EXPECT_EQ(value("text").description(), "t");
  EXPECT_EQ(value("untyped").description(), "u");
  EXPECT_EQ(value("whole").integerValue(), -3);
  EXPECT_EQ(value("large").integerValue(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(value("part").description(), "2.5");
  EXPECT_EQ(value("flag").booleanValue(), true);
  for (const char* name : {"list", "none", "odd", "missing"}) {
    EXPECT_TRUE(value(name).isNull()) << name;
  }
  EXPECT_EQ(assetOf(all[0]), nullptr);
  EXPECT_EQ(value("filecontents").description(), "a text");
}

TEST_F(CloudKitContainersTest, aRecordWithoutFieldsHasNone) {
  cloud_.setAnswer({.body = {R"({"records": [{"recordName": "a"}, 7]})"}});
  const auto all = records();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_TRUE(all[0]->objectForKey("filecontents").isNull());
  EXPECT_TRUE(all[1]->objectForKey("filecontents").isNull());
}

// Assets.

TEST_F(CloudKitContainersTest, anAssetIsAPrivateFileAsLongAsItsRecordLives) {
  const auto bytes = "caf\xE9 \xFF\0 not UTF-8"s;
  cloud_.addAdFile(bytes);
  auto all = records();
  ASSERT_EQ(all.size(), 1U);
  const std::string path = pathOf(*assetOf(all[0]));
  EXPECT_EQ(contents(path), bytes);
  EXPECT_EQ(contents(path), bytes) << "a second look finds the same";
  struct ::stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  EXPECT_EQ(status.st_nlink, 0U) << "nobody else can find it";
  EXPECT_THAT(namelessFiles(), ElementsAre(path));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
  all.clear();
  EXPECT_THAT(namelessFiles(), IsEmpty());
}

TEST_F(CloudKitContainersTest, anEmptyAssetIsAnEmptyFile) {
  cloud_.addAdFile("");
  const auto all = records();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(std::filesystem::file_size(pathOf(*assetOf(all[0]))), 0U);
}

TEST_F(CloudKitContainersTest, aLargeAssetArrivesWhole) {
  std::string text(20'000'000, 'x');
  text.back() = 'y';
  cloud_.addAdFile(text);
  const auto all = records();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_TRUE(contents(pathOf(*assetOf(all[0]))) == text);
}

TEST_F(CloudKitContainersTest, anAssetThatArrivesSlowlyArrives) {
  cloud_.addAdFile({.body = {"sl", "ow"}, .waitsBetweenPieces = true}, 4);
  const auto container =
      CloudKitContainerFactory(options_).containerWithIdentifier(CloudServer::kContainer);
  PendingQuery pending;
  container->publicCloudDatabase()->performQuery(CloudServer::adFileQuery(), pending.completion());
  ASSERT_TRUE(cloud_.server().waitForRequests(2));
  EXPECT_FALSE(pending.isOver());
  cloud_.server().releasePiece();
  const auto outcome = pending.wait();
  ASSERT_TRUE(outcome && outcome->records);
  EXPECT_EQ(contents(pathOf(*assetOf(outcome->records->back()))), "slow");
}

TEST_F(CloudKitContainersTest, anAssetThatIsCutIsAnError) {
  cloud_.addAdFile({.body = {"half"}, .ending = Ending::cut}, 5);
  expectError(error(), "curl", CURLE_PARTIAL_FILE, "");
  EXPECT_THAT(namelessFiles(), IsEmpty());
}

TEST_F(CloudKitContainersTest, anAssetThatStopsComingIsAnError) {
  options_.http.idleLimitSeconds = 0.3;
  cloud_.addAdFile({.body = {"half"}, .ending = Ending::stall}, 5);
  expectError(error(), "curl", CURLE_OPERATION_TIMEDOUT, "Nothing has arrived for too long");
}

TEST_F(CloudKitContainersTest, anAssetOfAnotherSizeIsAnError) {
  cloud_.addAdFile({.body = {"12345"}}, 6);
  expectError(error(), "CloudKit", 200, "an asset is shorter than its record says");
  cloud_.addAdFile({.body = {"12345"}}, 4);
  expectError(error(), "CloudKit", 200, "an asset is longer than its record says");
  EXPECT_THAT(namelessFiles(), IsEmpty());
}

TEST_F(CloudKitContainersTest, anAssetWithoutAStatedSizeIsTakenAsItComes) {
  cloud_.server().setAnswer("/a", {.body = {"text"}});
  cloud_.setAnswer({.body = {R"({"records": [{"fields": {"filecontents": {"type": "ASSETID",
      "value": {"downloadURL": ")" +
                             cloud_.server().url("/a") + R"("}}}}]})"}});
  const auto all = records();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(contents(pathOf(*assetOf(all[0]))), "text");
}

TEST_F(CloudKitContainersTest, anAssetThatIsNotThereIsAnError) {
  cloud_.addAdFile({.status = 404, .body = {"<h1>A long page about nothing</h1>"}}, 4);
  expectError(error(), "CloudKit", 404, "an asset could not be fetched: HTTP status 404");
  cloud_.addAdFile({.status = 410}, 4);
  expectError(error(), "CloudKit", 410, "an asset could not be fetched: HTTP status 410");
}

TEST_F(CloudKitContainersTest, anAssetMayHaveMoved) {
  cloud_.addAdFile(LoopbackServer::redirect("/new"), 4);
  cloud_.server().setAnswer("/new", {.body = {"text"}});
  const auto all = records();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(contents(pathOf(*assetOf(all[0]))), "text");
}

TEST_F(CloudKitContainersTest, anAssetWithoutAnAddressHasNoFile) {
  cloud_.setAnswer({.body = {R"({"records": [{"fields": {
      "filecontents": {"value": {"size": 3}, "type": "ASSETID"}}}]})"}});
  const auto all = records();
  ASSERT_EQ(all.size(), 1U);
  ASSERT_NE(assetOf(all[0]), nullptr);
  EXPECT_EQ(assetOf(all[0])->fileUrl(), std::nullopt);
}

TEST_F(CloudKitContainersTest, anAssetsAddressThatIsNoneIsAnError) {
  for (const char* address :
       {"no address", "file:///etc/hostname", "ftp://127.0.0.1/a", "a", "http:///a"}) {
    cloud_.setAnswer({.body = {R"({"records": [{"fields": {"filecontents": {"value":
        {"downloadURL": ")" + std::string(address) +
                               R"("}, "type": "ASSETID"}}}]})"}});
    expectError(error(), "CloudKit", 200,
                "an asset's address cannot be used: " + std::string(address));
  }
}

TEST_F(CloudKitContainersTest, aLongAddressIsCutInTheError) {
  const std::string address = "nowhere " + std::string(2000, 'x');
  cloud_.setAnswer({.body = {R"({"records": [{"fields": {"filecontents": {"value":
      {"downloadURL": ")" + address +
                             R"("}, "type": "ASSETID"}}}]})"}});
  EXPECT_EQ(error().description, "an asset's address cannot be used: " + address.substr(0, 500));
}

TEST_F(CloudKitContainersTest, anAssetThatHoldsMoreThanItMayIsAnError) {
  options_.http.mostBytes = 1000;
  cloud_.addAdFile(std::string(1000, 'x'));
  EXPECT_EQ(records().size(), 1U);
  EXPECT_EQ(cloud_.downloads(), 1);
  cloud_.addAdFile({.body = {"text"}}, 1001);
  expectError(error(), "CloudKit", 200, "an asset is too large");
  EXPECT_EQ(cloud_.downloads(), 1);
  cloud_.server().setAnswer("/a", {.body = {std::string(1001, 'x')}, .isChunked = true});
  cloud_.setAnswer({.body = {R"({"records": [{"fields": {"filecontents": {"type": "ASSETID",
      "value": {"downloadURL": ")" +
                             cloud_.server().url("/a") + R"("}}}}]})"}});
  expectError(error(), "curl", CURLE_FILESIZE_EXCEEDED, "holds more than can be taken");
  EXPECT_THAT(namelessFiles(), IsEmpty());
}

TEST_F(CloudKitContainersTest, anAssetThatDecodesToMoreThanItMayIsAnError) {
  options_.http.mostBytes = 1 << 20;
  cloud_.server().setAnswer("/a", {.headers = {{"Content-Encoding", "gzip"}},
                                   .body = {gzipped(std::string((1 << 20) + 1, 'x'))}});
  cloud_.setAnswer({.body = {R"({"records": [{"fields": {"filecontents": {"type": "ASSETID",
      "value": {"downloadURL": ")" +
                             cloud_.server().url("/a") + R"("}}}}]})"}});
  expectError(error(), "curl", CURLE_FILESIZE_EXCEEDED, "holds more than can be taken");
}

TEST_F(CloudKitContainersTest, aServiceOnHttpsHasItsAssetsThereToo) {
  CloudServer secure(Security::tls);
  secure.addAdFile("text");
  options_.serviceAddress = secure.server().url("");
  options_.http.certificateAuthorityFile = secure.server().certificateFile();
  EXPECT_EQ(records().size(), 1U);
  cloud_.server().setAnswer("/a", {.body = {"text"}});
  secure.setAnswer({.body = {R"({"records": [{"fields": {"filecontents": {"type": "ASSETID",
      "value": {"downloadURL": ")" +
                             cloud_.server().url("/a") + R"("}}}}]})"}});
  expectError(error(), "CloudKit", 200, "an asset's address cannot be used");
  EXPECT_THAT(cloud_.server().requests(), IsEmpty());
}

TEST_F(CloudKitContainersTest, aFolderThatCannotBeWrittenIsAnError) {
  ::setenv("TMPDIR", "/no/such/folder", 1);
  cloud_.addAdFile("text");
  expectError(error(), "CloudKit", 200,
              "no file can be made for an asset: No such file or directory");
}

TEST_F(CloudKitContainersTest, aFileThatCannotGrowIsAnError) {
  cloud_.addAdFile(std::string(5000, 'x'));
  const FileSizeLimit limit(1000);
  expectError(error(), "CloudKit", 200, "an asset cannot be stored: File too large");
}

TEST_F(CloudKitContainersTest, aRecordWithTooManyAssetsIsAnError) {
  nlohmann::json fields;
  for (int i = 0; i < 17; ++i) {
    fields["file" + std::to_string(i)] = {{"value", {{"downloadURL", cloud_.server().url("/a")}}},
                                          {"type", "ASSETID"}};
  }
  cloud_.setAnswer({.body = {nlohmann::json{{"records", {{{"fields", fields}}}}}.dump()}});
  expectError(error(), "CloudKit", 200, "the last record has too many assets");
}

// Errors.

TEST_F(CloudKitContainersTest, everyDocumentedErrorIsReadable) {
  const auto body = [](const char* code, const char* more = "") {
    return std::string(R"({"uuid": "1-2", "serverErrorCode": ")") + code +
           R"(", "reason": "because")" + more + "}";
  };
  expectError(errorAfter(400, body("BAD_REQUEST")), "CloudKit", 400, "BAD_REQUEST: because");
  expectError(errorAfter(401, body("AUTHENTICATION_REQUIRED", R"(, "redirectURL": "https://a/")")),
              "CloudKit", 401, "AUTHENTICATION_REQUIRED: because");
  expectError(errorAfter(421, body("AUTHENTICATION_REQUIRED")), "CloudKit", 421,
              "AUTHENTICATION_REQUIRED: because");
  expectError(errorAfter(500, body("INTERNAL_ERROR")), "CloudKit", 500, "INTERNAL_ERROR: because");
  expectError(errorAfter(503, body("TRY_AGAIN_LATER", R"(, "retryAfter": 12)")), "CloudKit", 503,
              "TRY_AGAIN_LATER: because (retry after 12 s)");
  expectError(errorAfter(200, body("ACCESS_DENIED")), "CloudKit", 200, "ACCESS_DENIED: because");
}

TEST_F(CloudKitContainersTest, aRateLimitIsAnError) {
  expectError(errorAfter(429, R"({"serverErrorCode": "THROTTLED", "retryAfter": 30.9})"),
              "CloudKit", 429, "THROTTLED (retry after 30 s)");
}

TEST_F(CloudKitContainersTest, anErrorWithoutJsonIsItsStatus) {
  expectError(errorAfter(502, "<h1>Bad Gateway</h1>"), "CloudKit", 502,
              "the cloud service answered with HTTP status 502");
  expectError(errorAfter(429, ""), "CloudKit", 429, "HTTP status 429");
}

TEST_F(CloudKitContainersTest, anAnswerThatIsNoAnswerIsAnError) {
  for (const char* body : {"", "<html>", "{\"records\": [", "{\"records\": []} {}"}) {
    expectError(errorAfter(200, body), "CloudKit", 200, "the cloud service's answer is no JSON");
  }
  for (const char* body : {"[]", "7", "null", "{}", R"({"records": {}})", R"({"records": null})"}) {
    expectError(errorAfter(200, body), "CloudKit", 200, "answer holds no records");
  }
}

TEST_F(CloudKitContainersTest, aRecordThatCouldNotBeReadIsAnError) {
  expectError(errorAfter(200, R"({"records": [{"recordName": "r1",
                  "serverErrorCode": "NOT_FOUND", "reason": "it has gone"}]})"),
              "CloudKit", 200, "NOT_FOUND for record r1: it has gone");
}

TEST_F(CloudKitContainersTest, aLongReasonIsCutBetweenCharacters) {
  std::string reason;
  for (int i = 0; i < 1000; ++i) {
    reason += "\u20AC";
  }
  const auto description =
      errorAfter(400, R"({"serverErrorCode": "A", "reason": ")" + reason + R"("})").description;
  EXPECT_EQ(description, "A: " + reason.substr(0, 498));
}

TEST_F(CloudKitContainersTest, anAnswerFarTooDeepDoesNoHarm) {
  const std::string deep(1'000'000, '[');
  expectError(errorAfter(200, deep), "CloudKit", 200, "no JSON");
  const std::string nested = R"({"records": [{"fields": {"a": {"value": )" + deep +
                             std::string(deep.size(), ']') + "}}}]}";
  cloud_.setAnswer({.body = {nested}});
  EXPECT_EQ(records().size(), 1U);
}

TEST_F(CloudKitContainersTest, answersThatHoldMoreThanTheyMayAreAnError) {
  options_.http.mostBytes = 1000;
  expectError(errorAfter(502, std::string(1001, ' ')), "curl", CURLE_FILESIZE_EXCEEDED, "");
  std::atomic<int> pages = 0;
  cloud_.setHandler([&](const LoopbackServer::Request&) -> Answer {
    return {.body = {R"({"records": [], "continuationMarker": ")" + std::to_string(++pages) +
                     "\"}" + std::string(400, ' ')}};
  });
  expectError(error(), "CloudKit", 200, "the cloud service's answer is too long");
  EXPECT_EQ(pages, 3);
}

TEST_F(CloudKitContainersTest, anAnswerOfTooManyValuesIsAnError) {
  std::string values = "0";
  for (int i = 0; i < 1'000'000; ++i) {
    values += ",0";
  }
  expectError(errorAfter(200, "{\"records\": [" + values + "]}"), "CloudKit", 200,
              "the cloud service's answer is too long");
}

TEST_F(CloudKitContainersTest, resultsThatDoNotEndAreAnError) {
  const std::string page = R"({"records": [], "continuationMarker": ")";
  expectError(errorAfter(200, page + "same\"}"), "CloudKit", 200,
              "the cloud service's results do not end");
  EXPECT_EQ(cloud_.queries(), 2);
  std::atomic<int> count = 0;
  cloud_.setHandler([&](const LoopbackServer::Request&) -> Answer {
    return {.body = {page + std::to_string(++count) + "\"}"}};
  });
  expectError(error(), "CloudKit", 200, "the cloud service's results do not end");
  EXPECT_EQ(count, 1000);
}

TEST_F(CloudKitContainersTest, anEmptyMarkerIsTheEnd) {
  cloud_.setAnswer({.body = {R"({"records": [], "continuationMarker": ""})"}});
  EXPECT_THAT(records(), IsEmpty());
}

TEST_F(CloudKitContainersTest, queriesAreNotLedElsewhere) {
  cloud_.setAnswer(LoopbackServer::redirect("/elsewhere", 307));
  expectError(error(), "CloudKit", 307, "HTTP status 307");
  EXPECT_EQ(cloud_.server().requests().size(), 1U);
}

TEST_F(CloudKitContainersTest, aQueryThatStopsIsAnError) {
  options_.http.idleLimitSeconds = 0.3;
  cloud_.setAnswer({.ending = Ending::stall});
  expectError(error(), "curl", CURLE_OPERATION_TIMEDOUT, "Nothing has arrived for too long");
}

TEST_F(CloudKitContainersTest, anAnswerThatIsCutIsAnError) {
  cloud_.setAnswer({.body = {R"({"records": []})"}, .ending = Ending::cut});
  expectError(error(), "curl", CURLE_PARTIAL_FILE, "");
}

TEST_F(CloudKitContainersTest, aServiceThatIsNotThereIsAnError) {
  {
    const LoopbackServer gone;
    options_.serviceAddress = gone.url("");
  }
  expectError(error(), "curl", CURLE_COULDNT_CONNECT, "");
}

TEST_F(CloudKitContainersTest, aServiceThatCannotBeTrustedIsAnError) {
  CloudServer secure(Security::tls);
  options_.serviceAddress = secure.server().url("");
  expectError(error(), "curl", CURLE_PEER_FAILED_VERIFICATION, "");
  EXPECT_THAT(secure.server().requests(), IsEmpty());
}

TEST_F(CloudKitContainersTest, aQueryThatNoThreadCanRunIsAnError) {
  const auto runLoop = std::make_shared<FakeRunLoop>();
  Platform services = nullPlatform();
  services.mainRunLoop = runLoop;
  installPlatform(std::move(services));
  const auto database = CloudKitContainerFactory(options_)
                            .containerWithIdentifier(CloudServer::kContainer)
                            ->publicCloudDatabase();
  PendingQuery pending;
  {
    const NoThreads noThreads;
    database->performQuery(CloudServer::adFileQuery(), pending.completion());
  }
  EXPECT_FALSE(pending.isOver());
  runLoop->runUntilIdle();
  ASSERT_TRUE(pending.isOver());
  expectError(*pending.wait()->error, "curl", CURLE_FAILED_INIT, "The request cannot be run: ");
  PendingQuery next;
  database->performQuery(CloudServer::adFileQuery(), next.completion());
  const auto outcome = next.wait();
  ASSERT_TRUE(outcome);
  EXPECT_TRUE(outcome->records);
}

TEST_F(CloudKitContainersTest, aCompletionWithoutMemoryForTheRecordsGetsAnError) {
  std::promise<Error> error;
  int calls = 0;
  CloudKitContainerFactory(options_)
      .containerWithIdentifier(CloudServer::kContainer)
      ->publicCloudDatabase()
      ->performQuery(CloudServer::adFileQuery(), [&](const auto&, const auto& failure) {
        if (++calls == 1) {
          throw std::bad_alloc();
        }
        error.set_value(failure.value());
      });
  expectError(error.get_future().get(), "curl", CURLE_OUT_OF_MEMORY, "not enough memory");
  EXPECT_EQ(calls, 2);
}

// Life.

TEST_F(CloudKitContainersTest, queriesOfOneDatabaseHaveOutcomesOfTheirOwn) {
  cloud_.addAdFile("text");
  const auto database = CloudKitContainerFactory(options_)
                            .containerWithIdentifier(CloudServer::kContainer)
                            ->publicCloudDatabase();
  std::array<PendingQuery, 20> queries;
  for (auto& query : queries) {
    database->performQuery(CloudServer::adFileQuery(), query.completion());
  }
  for (auto& query : queries) {
    const auto outcome = query.wait();
    ASSERT_TRUE(outcome && outcome->records);
    EXPECT_EQ(contents(pathOf(*assetOf(outcome->records->back()))), "text");
  }
  EXPECT_THAT(namelessFiles(), IsEmpty());
}

// A completion waits for the main thread, which may be in a menu for long: the silence of the other
// queries begins behind it.
TEST_F(CloudKitContainersTest, aQueryDoesNotAgeWhileAnotherOnesCompletionTakesLong) {
  options_.http.idleLimitSeconds = 1;
  CloudServer silent;
  silent.setAnswer({.ending = Ending::stall});
  CloudServer prompt;
  std::promise<void> hasReturned;
  std::atomic<int> requests = 0;
  cloud_.setHandler([&, returned = hasReturned.get_future().share()](const auto&) -> Answer {
    if (++requests == 2) {
      returned.wait();
      EXPECT_TRUE(outcomeOf(prompt));  // takes longer than a look at who is idle
    }
    return {.body = {R"({"records": []})"}};
  });
  std::atomic<int> completions = 0;
  const auto waitsOnce = [&](const CloudDatabase::Completion& report) {
    return [&, report](auto records, auto error) {
      if (++completions == 1) {
        queryThatTakesTheIdleLimit(silent);
        hasReturned.set_value();
      }
      report(records, error);
    };
  };
  const auto database = CloudKitContainerFactory(options_)
                            .containerWithIdentifier(CloudServer::kContainer)
                            ->publicCloudDatabase();
  std::array<PendingQuery, 2> queries;
  for (auto& query : queries) {
    database->performQuery(CloudServer::adFileQuery(), waitsOnce(query.completion()));
  }
  for (auto& query : queries) {
    const auto outcome = query.wait();
    ASSERT_TRUE(outcome);
    EXPECT_TRUE(outcome->records) << outcome->error->description;
  }
}

TEST_F(CloudKitContainersTest, theCompletionIsReleasedAfterItsCall) {
  const auto released = std::make_shared<std::promise<void>>();
  PendingQuery pending;
  CloudKitContainerFactory(options_)
      .containerWithIdentifier(CloudServer::kContainer)
      ->publicCloudDatabase()
      ->performQuery(
          CloudServer::adFileQuery(),
          [held = std::shared_ptr<void>(nullptr, [released](void*) { released->set_value(); }),
           completion = pending.completion()](auto records, auto error) {
            completion(records, error);
          });
  EXPECT_TRUE(pending.wait());
  EXPECT_EQ(released->get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

TEST_F(CloudKitContainersTest, exitEndsAQueryUnderWay) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        auto& cloud = *new CloudServer;
        cloud.addAdFile({.body = {"half"}, .ending = Ending::stall}, 5);
        static std::atomic<int> released = 0;
        // The first to be registered is the last to run: by then the queue's thread has ended and
        // released the completion.
        std::atexit([] { _exit(released == 1 ? 0 : 7); });
        options_.serviceAddress = cloud.server().url("");
        const auto container =
            CloudKitContainerFactory(options_).containerWithIdentifier(CloudServer::kContainer);
        container->publicCloudDatabase()->performQuery(
            CloudServer::adFileQuery(), [held = std::shared_ptr<void>(nullptr, [](void*) {
                                           ++released;
                                         })](auto, auto) { _exit(8); });
        if (!cloud.server().waitForRequests(2)) {
          _exit(9);
        }
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace qorix
