#include <gtest/gtest.h>

#include "platform/linux/CurlUrlSession.h"
#include "platform/linux/PreferredLanguages.h"
#include "support/Locale.h"
#include "support/LoopbackServer.h"
#include "support/RecordingUrlSessionDelegate.h"

namespace qorix {
namespace {

// A Turkish user's "I" is no capital "i": what protocols write in capitals must not follow that.

TEST(TurkishLocaleTest, aCompressionIsKnownHoweverItIsSpelled) {
  const LocaleInUse turkish("tr_TR");
  LoopbackServer server;
  server.setAnswer("/ad.xml",
                   {.headers = {{"Content-Encoding", "GZIP"}}, .body = {gzipped("text")}});
  const auto delegate = std::make_shared<RecordingUrlSessionDelegate>();
  const auto session =
      CurlUrlSessionFactory(CurlUrlSessionFactory::Options()).createEphemeralSession(delegate);
  session->startDataTask(Url::parse(server.url("/ad.xml")).value());
  ASSERT_TRUE(delegate->waitForOutcomes());
  EXPECT_EQ(delegate->outcomes().front(), std::nullopt);
  EXPECT_EQ(delegate->body(), "text");
}

TEST(TurkishLocaleTest, languagesAreSpelledInAscii) {
  const LocaleInUse turkish("tr_TR");
  EXPECT_EQ(languageTag("IT_it"), "it-IT");
}

}  // namespace
}  // namespace qorix
