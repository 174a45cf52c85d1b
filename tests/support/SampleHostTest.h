#pragma once

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <qorix/platform/Platform.h>

#include "fakes/RecordingLog.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "support/Documents.h"
#include "support/HostProcess.h"
#include "support/LoopbackServer.h"
#include "support/Screen.h"

namespace qorix::test {
inline constexpr const char* kWillShow = "ZAMPushAdWillShowNotification";
inline constexpr const char* kPath = "/mac/ads/commonad.xml";
inline constexpr Pixel kAdColor{255, 0, 170};  // of no desktop and no editor

inline std::string entry(const std::string& page) {
  return "<default><![CDATA[<!DOCTYPE html>" + page + "]]></default>";
}

/// A page that is all of the one colour.
inline constexpr const char* kPlainPage = "<body style='margin:0;background:#ff00aa'>";

/// A document from a loopback server, shown by the real host on a real display.
class SampleHostTest : public ::testing::Test {
 public:
  ~SampleHostTest() override { std::filesystem::remove_all(folder_); }

 protected:
  SampleHostTest()
      : folder_(std::filesystem::temp_directory_path() /
                ("qorix-end-to-end-" + std::to_string(getpid()))),
        settings_((folder_ / "settings.sqlite").string()) {
    std::filesystem::create_directories(folder_);
    Platform services = nullPlatform();
    services.log = log_;
    installPlatform(services);
  }

  void serve(const DocumentOf& document, const std::string& page = kPlainPage) {
    DocumentOf shown = document;
    shown.html = entry(page);
    server_.setAnswer(kPath, {.body = {makeDocument(shown)}});
  }

  std::vector<std::string> arguments(std::vector<std::string> more = {}) const {
    std::vector<std::string> all{"--url",   server_.url(kPath), "--defaults",
                                 settings_, "--applications",   folder_.string()};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  /// Asks the host to quit, and expects that it does so properly.
  static void expectProperQuit(HostProcess& host) {
    host.sendSignal(SIGTERM);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(WIFEXITED(host.status()) && WEXITSTATUS(host.status()) == 0) << host.status();
    EXPECT_EQ(host.countEvents("quit"), 1);
    // On Wayland the engine's sandboxed process looks for a bus, of which tests have none.
    EXPECT_EQ(host.countLog("-WARNING **"), host.countLog("Settings portal not found"));
    EXPECT_EQ(host.countLog("-CRITICAL **"), 0);
  }

  /// Launches the host until the advertisement is shown. Returns false if it is not shown within
  /// `patience` seconds of the decision.
  bool isShownInOneLaunch(double patience = kPatience) {
    HostProcess host(arguments());
    // Once the definition is cached the decision has been taken, and a due one is shown at once.
    const bool decided = host.waitForLog("ZAM dadstring is saved.");
    const bool shown = decided && host.waitForEvent(kWillShow, patience).has_value();
    expectProperQuit(host);
    return shown;
  }

  std::int64_t storedCount() const {
    return SqliteUserDefaults(settings_).integerForKey("ZAMMyPushAdCountKey");
  }

  LoopbackServer server_;
  const std::filesystem::path folder_;
  const std::string settings_;
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
};

}  // namespace qorix::test
