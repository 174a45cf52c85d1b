#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "examples/server/CloudRecords.h"

namespace {

using nlohmann::json;

/// A service with three records named "a" and one of another type, and a sound query for them.
class CloudRecordsTest : public testing::Test {
 protected:
  CloudRecordsTest() {
    for (const char* number : {"1", "2", "3"}) {
      records_.add({.type = "file", .texts = {{"name", "a"}, {"number", number}}, .assets = {}});
    }
    records_.add({.type = "other", .texts = {{"name", "a"}}, .assets = {}});
  }

  CloudRecords::Answer answer() const {
    auto request = request_;
    request.body = body_.dump();
    return records_.answer(request);
  }

  /// What a request gets that has been changed so.
  void expectRefusal(const std::function<void()>& change, int status, const std::string& code) {
    const auto soundRequest = request_;
    const json soundBody = body_;
    change();
    const auto refused = answer();
    request_ = soundRequest;
    body_ = soundBody;
    EXPECT_EQ(refused.status, status) << refused.body;
    const json error = json::parse(refused.body);
    EXPECT_EQ(error["serverErrorCode"], code) << refused.body;
    EXPECT_NE(error["reason"], "");
  }

  CloudRecords records_{"iCloud.a", "production", "a token"};
  CloudRecords::Request request_{
      .method = "POST",
      .target = "/database/1/iCloud.a/production/public/records/query?ckAPIToken=a%20token",
      .contentType = "application/json",
      .body = {}};
  json body_ = json::parse(R"({
    "zoneID": {"zoneName": "_defaultZone"},
    "query": {"recordType": "file",
              "filterBy": [{"comparator": "EQUALS", "fieldName": "name",
                            "fieldValue": {"value": "a", "type": "STRING"}}]}
  })");
  json& filter() { return body_["query"]["filterBy"][0]; }
};

TEST_F(CloudRecordsTest, aSoundQueryFindsTheRecordsOfItsTypeAndName) {
  const auto found = answer();
  EXPECT_EQ(found.status, 200);
  const json page = json::parse(found.body);
  ASSERT_EQ(page["records"].size(), 3U);
  EXPECT_EQ(page["records"][2]["fields"]["number"]["value"], "3");
  EXPECT_FALSE(page.contains("continuationMarker"));
}

TEST_F(CloudRecordsTest, aMarkerLeadsToTheNextPage) {
  records_.setPageSize(2);
  const json first = json::parse(answer().body);
  EXPECT_EQ(first["records"].size(), 2U);
  body_["continuationMarker"] = first["continuationMarker"];
  const json second = json::parse(answer().body);
  ASSERT_EQ(second["records"].size(), 1U);
  EXPECT_EQ(second["records"][0]["fields"]["number"]["value"], "3");
  EXPECT_FALSE(second.contains("continuationMarker"));
}

TEST_F(CloudRecordsTest, anotherAddressMethodOrTypeOfBodyIsRefused) {
  expectRefusal([&] { request_.target.replace(12, 8, "iCloud.b"); }, 404, "NOT_FOUND");
  expectRefusal([&] { request_.method = "PUT"; }, 405, "BAD_REQUEST");
  expectRefusal([&] { request_.contentType = "text/html"; }, 400, "BAD_REQUEST");
}

TEST_F(CloudRecordsTest, aTokenThatIsMissingWrongOrBadlyEscapedIsRefused) {
  const std::string path = records_.queryPath();
  for (const std::string query :
       {"", "?", "?ckAPIToken=", "?ckAPIToken=a token ", "?ckAPIToken=%zz",
        "?ckAPIToken=a%20token%2", "?token=a%20token"}) {
    expectRefusal([&] { request_.target = path + query; }, 401, "AUTHENTICATION_FAILED");
  }
}

TEST_F(CloudRecordsTest, aBodyThatIsNoSoundQueryIsRefused) {
  const auto expectBad = [&](const std::function<void()>& change) {
    expectRefusal(change, 400, "BAD_REQUEST");
  };
  expectBad([&] { body_ = "text"; });
  expectBad([&] { body_ = json::array(); });
  expectBad([&] { body_.erase("query"); });
  expectBad([&] { body_["stray"] = 1; });
  expectBad([&] { body_["zoneID"] = 1; });
  expectBad([&] { body_["query"].erase("recordType"); });
  expectBad([&] { body_["query"]["recordType"] = 1; });
  expectBad([&] { body_["query"]["stray"] = 1; });
  expectBad([&] { body_["query"]["filterBy"] = json::array(); });
  expectBad([&] { body_["query"]["filterBy"].push_back(filter()); });
  expectBad([&] { filter()["comparator"] = "LIKE"; });
  expectBad([&] { filter().erase("fieldName"); });
  expectBad([&] { filter()["fieldValue"]["type"] = "INT64"; });
  expectBad([&] { filter()["fieldValue"]["value"] = 7; });
  expectBad([&] { filter()["fieldValue"].erase("type"); });
  for (const char* marker : {"", "2", "from-", "from-x", "from-9999999999"}) {
    expectBad([&] { body_["continuationMarker"] = marker; });
  }
}

TEST_F(CloudRecordsTest, aBodyThatIsNoJsonIsRefused) {
  request_.body = "{";
  const auto refused = records_.answer(request_);
  EXPECT_EQ(refused.status, 400);
}

TEST_F(CloudRecordsTest, anotherZoneIsRefused) {
  expectRefusal([&] { body_["zoneID"]["zoneName"] = "mine"; }, 404, "ZONE_NOT_FOUND");
}

}  // namespace
