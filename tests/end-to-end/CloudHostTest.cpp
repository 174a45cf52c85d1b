#include <chrono>

#include "support/CheckLines.h"
#include "support/CloudServer.h"
#include "support/SampleHostTest.h"

namespace qorix::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kQueryMethod = "-[MyPushAdCloudManager queryAndHandleAdFileWithFileName:]";
constexpr const char* kRecordMethod = "-[MyPushAdCloudManager handleRecord:]";
constexpr const char* kPrepareMethod = "-[MyPushAdCloudManager prepareDatabaseIfNeeded]";

/// A document from a cloud record, shown by the real host on a real display.
class CloudHostTest : public SampleHostTest {
 protected:
  static std::string document(const std::string& width) {
    return makeDocument({.width = width, .height = "60", .html = entry(kPlainPage)});
  }

  std::vector<std::string> cloudArguments(const std::string& container = CloudServer::kContainer,
                                          const std::string& token = CloudServer::kToken) {
    return {"--cloud-container",   container,     "--cloud-base",   cloud_.server().url(""),
            "--cloud-environment", "development", "--cloud-token",  token,
            "--defaults",          settings_,     "--applications", folder_.string()};
  }

  /// What a host logs that fails to get the document.
  std::vector<std::string> logOfFailure() {
    HostProcess host(cloudArguments());
    EXPECT_TRUE(host.waitForLog("ZAM dError rty"));
    expectProperQuit(host);
    EXPECT_EQ(host.countEvents(kWillShow), 0);
    return host.log();
  }

  CloudServer cloud_{LoopbackServer::Security::plain, "development"};
};

TEST_F(CloudHostTest, showsTheBannerOfTheLastRecord) {
  cloud_.addAdFile(document("200"));
  cloud_.addAdFile(document("250"));
  cloud_.addAdFile(document("300"));
  cloud_.setPageSize(2);
  HostProcess host(cloudArguments());
  const auto event = host.waitForEvent(kWillShow);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->at("frame"), nlohmann::json({500, 440, 300, 60}));
  const auto box = waitForColor(kAdColor, 300, 60);
  EXPECT_EQ(box.width, 300);
  EXPECT_EQ(box.height, 60);
  EXPECT_THAT(host.log(), ElementsAre("ZAM dSuccess", "ZAM dadstring is saved."));
  expectProperQuit(host);
  EXPECT_EQ(cloud_.queries(), 2);
  EXPECT_EQ(cloud_.downloads(), 1);
}

TEST_F(CloudHostTest, showsTheCachedBannerWhenTheServiceIsGone) {
  cloud_.addAdFile(document("300"));
  {
    HostProcess host(cloudArguments());
    EXPECT_TRUE(host.waitForLog("ZAM dadstring is saved."));
    expectProperQuit(host);
  }
  cloud_.setAnswer({.status = 503, .body = {"<h1>Down</h1>"}});
  HostProcess host(cloudArguments());
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  EXPECT_TRUE(host.waitForLog("ZAM dError rty"));
  EXPECT_THAT(host.log(), ElementsAre(checkLine(kQueryMethod, 123,
                                                "The Cloud Query Error:Error Domain=CloudKit "
                                                "Code=503 \"the cloud service answered with HTTP "
                                                "status 503\""),
                                      "ZAM dError rty"));
  expectProperQuit(host);
}

TEST_F(CloudHostTest, aRateLimitIsLogged) {
  cloud_.setAnswer({.status = 429, .body = {R"({"uuid": "1", "serverErrorCode": "THROTTLED",
                                 "reason": "too many requests", "retryAfter": 30})"}});
  EXPECT_THAT(logOfFailure(), ElementsAre(checkLine(kQueryMethod, 123,
                                                    "The Cloud Query Error:Error Domain=CloudKit "
                                                    "Code=429 \"THROTTLED: too many requests "
                                                    "(retry after 30 s)\""),
                                          "ZAM dError rty"));
}

TEST_F(CloudHostTest, noRecordIsAFailure) {
  EXPECT_THAT(logOfFailure(), ElementsAre("ZAM dError rty"));
}

TEST_F(CloudHostTest, aTextInPlaceOfTheAssetIsLogged) {
  cloud_.addRecord({.type = "macadfiles",
                    .texts = {{"filename", "commonad"}, {"filecontents", document("300")}},
                    .assets = {}});
  EXPECT_THAT(logOfFailure(),
              ElementsAre(checkLine(kRecordMethod, 172, kFatalMessage), "ZAM dError rty"));
}

TEST_F(CloudHostTest, anAssetWithoutAnAddressIsLogged) {
  cloud_.setAnswer({.body = {R"({"records": [{"fields": {
      "filecontents": {"value": {"size": 3}, "type": "ASSETID"}}}]})"}});
  EXPECT_THAT(logOfFailure(),
              ElementsAre(checkLine(kRecordMethod, 173, kFatalMessage), "ZAM dError rty"));
}

TEST_F(CloudHostTest, anAssetThatIsNotUtf8IsLogged) {
  cloud_.addAdFile("caf\xE9");
  EXPECT_THAT(logOfFailure(),
              ElementsAre(checkLine(kRecordMethod, 176, kFatalMessage), "ZAM dError rty"));
}

TEST_F(CloudHostTest, withoutATokenTheHostStaysSilent) {
  cloud_.addAdFile(document("300"));
  HostProcess host(cloudArguments(CloudServer::kContainer, ""));
  EXPECT_TRUE(host.waitForEvent("ready"));
  expectProperQuit(host);
  EXPECT_THAT(host.log(),
              ElementsAre(checkLine(kPrepareMethod, 103, "***Error***: ZAM FATAL ERROR GOT!"),
                          checkLine(kPrepareMethod, 108, "ZAM Verify failed!")));
  EXPECT_THAT(cloud_.server().requests(), IsEmpty());
}

TEST_F(CloudHostTest, quitsWhileAnAssetIsFetched) {
  cloud_.addAdFile({.body = {"half"}, .ending = LoopbackServer::Ending::stall}, 5);
  HostProcess host(cloudArguments());
  ASSERT_TRUE(cloud_.server().waitForRequests(2, std::chrono::seconds(40)));
  expectProperQuit(host);
  EXPECT_THAT(host.log(), IsEmpty());
}

}  // namespace
}  // namespace qorix::test
