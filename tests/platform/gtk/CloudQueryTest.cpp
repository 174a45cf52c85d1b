#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>

#include <qorix/gtk3.h>
#include <qorix/platform/Platform.h>

#include "support/CloudServer.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {
namespace {

using Clock = std::chrono::steady_clock;

void installWith(CloudServer& cloud) {
  gtk::install({.bundleIdentifier = "com.example.host",
                .cloudServiceAddress = cloud.server().url(""),
                .cloudApiToken = CloudServer::kToken});
}

std::shared_ptr<CloudDatabase> database() {
  return platform()
      .cloudContainers->containerWithIdentifier(CloudServer::kContainer)
      ->publicCloudDatabase();
}

TEST(CloudQueryTest, theOutcomeIsHandledOnTheMainThreadWhileItsOwnThreadWaits) {
  CloudServer cloud;
  installWith(cloud);
  std::atomic<bool> isHandled = false;
  std::atomic<bool> wasHandledFirst = false;
  std::thread::id handledOn;
  database()->performQuery(CloudServer::adFileQuery(), [&](auto, auto) {
    platform().mainRunLoop->performAndWait([&] {
      handledOn = std::this_thread::get_id();
      isHandled = true;
    });
    wasHandledFirst = isHandled.load();
  });
  EXPECT_TRUE(waitFor([&] { return wasHandledFirst.load(); }));
  EXPECT_EQ(handledOn, std::this_thread::get_id());
}

// At its end a process waits for its worker threads, for two seconds at most. One that waits for
// the main thread must not be what it waits for.
TEST(CloudQueryTest, aProcessEndsAtOnceThoughAnOutcomeWaitsForTheMainThread) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";  // GTK has threads, which no fork survives
  EXPECT_EXIT(
      {
        static Clock::time_point start;
        std::atexit([] {  // the first to be registered is the last to run
          if (Clock::now() - start > std::chrono::milliseconds(1900)) {
            _exit(7);
          }
        });
        auto& cloud = *new CloudServer;
        installWith(cloud);
        static std::promise<void> arrived;
        database()->performQuery(CloudServer::adFileQuery(), [](auto, auto) {
          arrived.set_value();
          platform().mainRunLoop->performAndWait([] { _exit(9); });
        });
        arrived.get_future().wait();
        start = Clock::now();
        exit(0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace qorix::test
