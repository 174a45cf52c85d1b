#include <gmock/gmock.h>

#include <chrono>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>

#include <qorix/platform/Url.h>

#include "docs/Guide.h"
#include "platform/linux/CloudKitContainers.h"
#include "platform/linux/CurlUrlSession.h"
#include "support/CloudServer.h"
#include "support/LoopbackServer.h"
#include "support/QueryOutcome.h"
#include "support/RecordingUrlSessionDelegate.h"

namespace qorix::test {
namespace {

using Headers = std::map<std::string, std::string>;

/// What the test server adds to the headers of a request by itself.
bool isOfTheServer(const std::string& name) {
  return name.starts_with("local_") || name.starts_with("remote_");
}

/// The headers of a request as the guide writes them: host and length differ from case to case.
Headers sent(const LoopbackServer::Request& request) {
  Headers headers;
  for (const auto& [name, value] : request.headers) {
    if (!isOfTheServer(name)) {
      headers[name] = name == "host" ? "HOST" : name == "content-length" ? "LENGTH" : value;
    }
  }
  return headers;
}

class HostGuideRequestsTest : public testing::Test {
 protected:
  /// The headers that the guide names: rows of a name and a value.
  Headers headersIn(std::size_t table) const {
    Headers headers;
    for (const auto& row : guide_.table("What leaves the machine", table)) {
      std::string name = codeIn(row.at(0));
      for (char& c : name) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
      }
      headers[name] = codeIn(row.at(1));
    }
    return headers;
  }

  const Guide guide_;
};

TEST_F(HostGuideRequestsTest, theRequestToAWebServerHasTheHeadersOfTheGuide) {
  LoopbackServer server;
  server.setAnswer("/commonad.xml", {.body = {"text"}});
  const auto delegate = std::make_shared<RecordingUrlSessionDelegate>();
  const auto session = CurlUrlSessionFactory().createEphemeralSession(delegate);
  session->startDataTask(*Url::parse(server.url("/commonad.xml")));
  ASSERT_TRUE(server.waitForRequests(1, std::chrono::seconds(60)));
  const auto request = server.requests().at(0);
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(request.target, "/commonad.xml");
  EXPECT_EQ(request.body, "");
  EXPECT_EQ(sent(request), headersIn(0));
}

TEST_F(HostGuideRequestsTest, theRequestsToACloudServiceHaveTheHeadersOfTheGuide) {
  CloudServer cloud;
  cloud.addAdFile("text");
  CloudKitContainerFactory::Options options;
  options.serviceAddress = cloud.server().url("");
  options.apiToken = CloudServer::kToken;
  CloudKitContainerFactory factory(options);
  const auto container = factory.containerWithIdentifier(CloudServer::kContainer);
  ASSERT_NE(container, nullptr);
  PendingQuery pending;
  container->publicCloudDatabase()->performQuery(CloudServer::adFileQuery(), pending.completion());
  ASSERT_TRUE(cloud.server().waitForRequests(2, std::chrono::seconds(60)));
  const auto query = cloud.server().requests().at(0);
  EXPECT_EQ(query.method, "POST");
  const std::string token = "a%2Btoken%2Fwith%3Dsigns";  // as an address holds the server's
  const std::string shown =
      std::regex_replace(guide_.block("cloud-request"), std::regex("=token"), "=" + token);
  EXPECT_EQ(query.method + " " + query.target + "\n", shown);
  EXPECT_EQ(nlohmann::json::parse(query.body), nlohmann::json::parse(guide_.block("cloud-body")));
  EXPECT_EQ(sent(query), headersIn(1));
  const auto document = cloud.server().requests().at(1);
  EXPECT_EQ(document.method, "GET");
  EXPECT_EQ(sent(document), headersIn(0));
}

}  // namespace
}  // namespace qorix::test
