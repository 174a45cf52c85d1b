// A host that has no display, as a service or a remote shell has none.

#include <gmock/gmock.h>
#include <gtk/gtk.h>
#include <stdlib.h>

#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdOperator.h>
#include <qorix/gtk3.h>
#include <qorix/platform/MemoryUserDefaults.h>
#include <qorix/platform/Platform.h>

#include "fakes/RecordingLog.h"
#include "platform/gtk/Desktop.h"
#include "support/Records.h"
#include "support/TemporaryFolder.h"

namespace qorix::test {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

constexpr const char* kNoWindow = "ZAM There is no display: no window can be made";
constexpr const char* kNoView = "ZAM There is no display: no view can be made";

/// Whether the host has asked GTK for a display, in vain, or has not even asked.
class NoDisplayTest : public testing::TestWithParam<bool> {
 protected:
  NoDisplayTest() {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "GDK_BACKEND"}) {
      unsetenv(variable);
    }
    for (const char* variable : {"XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
      setenv(variable, folder.path().c_str(), 1);
    }
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    if (GetParam()) {
      EXPECT_FALSE(gtk_init_check(nullptr, nullptr));
    }
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING));
    testing::internal::CaptureStderr();
    manager = gtk::start({.bundleIdentifier = "com.example.host",
                          .settings = std::make_shared<MemoryUserDefaults>(),
                          .defaultAdFileUrl = "http://127.0.0.1:1/",
                          .defaultCloudContainerIdentifier = "iCloud.com.example.ads",
                          .cloudApiToken = "token",
                          .documentPublicKeys = {"key"}});
    startLog = testing::internal::GetCapturedStderr();
    Platform services = platform();
    services.log = log;
    installPlatform(services);
  }

  /// Runs what waits in the run loop, and what that adds.
  static void serve() {
    bool isDone = false;
    platform().mainRunLoop->performAfterDelay(0, [&] { isDone = true; });
    while (!isDone) {
      g_main_context_iteration(nullptr, TRUE);
    }
  }

  TemporaryFolder folder;
  std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
  std::shared_ptr<MyPushAdManager> manager;
  std::string startLog;
};

}  // namespace

TEST_P(NoDisplayTest, startingLogsOneLine) {
  EXPECT_THAT(startLog,
              EndsWith("ZAM QORIX is installed without a display: nothing can be shown\n"));
  EXPECT_EQ(std::count(startLog.begin(), startLog.end(), '\n'), 1) << startLog;
  ASSERT_NE(manager, nullptr);
  EXPECT_EQ(manager->appBundleIdentifier(), "com.example.host");
  EXPECT_THAT(platform().documentPublicKeys, ElementsAre("key"));
}

TEST_P(NoDisplayTest, eachRequestLogsThatThereIsNoWindow) {
  const auto logsWhy = ElementsAre(kNoWindow, HasSubstr(" 157: "));
  EXPECT_EQ(gtk::viewForOverlay(nullptr), nullptr);
  manager->prepareAndShowAdByUsingMyAppWebServerURLWithHostView(nullptr);
  EXPECT_THAT(log->takeLines(), logsWhy);
  manager->prepareAndShowAdByUsingDefaultCloudKitContainerWithHostView(nullptr);
  EXPECT_THAT(log->takeLines(), logsWhy);
  manager->prepareAndShowAdWithHostView(nullptr, MyPushAdFileHostModeWebServer,
                                        "http://127.0.0.1:1/");
  EXPECT_THAT(log->takeLines(), logsWhy);
  EXPECT_FALSE(manager->isDownloadFileRequested());
}

TEST_P(NoDisplayTest, aPresenterShowsNothing) {
  const auto presenter = MyPushAdOperator::createInstanceWithHostView(nullptr);
  presenter->processShowAdIfNeededWithPushAdInfo(
      makeRecord({.embed = 0, .width = 300, .height = 200}));
  serve();
  EXPECT_THAT(log->lines(), Contains(kNoView));
  EXPECT_EQ(presenter->popupAdWindow(), nullptr);
  EXPECT_FALSE(presenter->isAdShownAsBanner());
}

TEST_P(NoDisplayTest, thePlatformMakesNothingAndItsLoopRuns) {
  EXPECT_EQ(platform().windows->createWindowWithContentView(nullptr), nullptr);
  EXPECT_EQ(platform().windows->createBorderlessWindow({{0, 0}, {100, 100}}), nullptr);
  EXPECT_THAT(log->takeLines(), ElementsAre(kNoWindow, kNoWindow));
  EXPECT_FALSE(
      platform().interfaceLoader->load("MyPushAdViewController", *platform().libraryBundle, {}));
  EXPECT_THAT(log->takeLines(), ElementsAre(kNoView));
  EXPECT_EQ(gtk::primaryScreen(), nullptr);
  EXPECT_EQ(gtk::screenOfFrame({{0, 0}, {100, 100}}), nullptr);
  EXPECT_EQ(gtk::desktopHeight(), 0);
  platform().workspace->openUrl(*Url::parse("https://example.com/"));
  platform().mainRunLoop->serveHost();
  serve();
}

INSTANTIATE_TEST_SUITE_P(, NoDisplayTest, testing::Values(true, false), [](const auto& instance) {
  return instance.param ? "AskedFor" : "NotAskedFor";
});

}  // namespace qorix::test
