// What showing costs beside the services that it needs: a decision beside one durable commit of the
// same settings file, and a broadcast to many presenters beside as many empty calls.

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <qorix/MyPushAdOperator.h>

#include "fakes/FakePlatform.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "support/Records.h"

namespace qorix {
namespace {

using Clock = std::chrono::steady_clock;

double microsecondsOf(const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double medianOf(std::vector<double> times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

/// A folder that goes with the object.
struct Folder {
  Folder() { std::filesystem::create_directories(path); }
  ~Folder() { std::filesystem::remove_all(path); }
  const std::filesystem::path path =
      std::filesystem::current_path() / ("bench-settings-" + std::to_string(getpid()));
};

/// SQLite alone: one small durable change after the other, as the settings file is set up.
class PlainDatabase {
 public:
  explicit PlainDatabase(const std::string& path) {
    sqlite3_open(path.c_str(), &database_);
    run("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
        "CREATE TABLE settings (key TEXT PRIMARY KEY NOT NULL, value NOT NULL)");
  }
  PlainDatabase(const PlainDatabase&) = delete;
  PlainDatabase& operator=(const PlainDatabase&) = delete;
  ~PlainDatabase() { sqlite3_close(database_); }

  void commit(int value) {
    run("INSERT INTO settings VALUES ('count', " + std::to_string(value) +
        ") ON CONFLICT (key) DO UPDATE SET value = excluded.value");
  }

 private:
  void run(const std::string& text) {
    if (sqlite3_exec(database_, text.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
      std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(database_));
    }
  }

  sqlite3* database_ = nullptr;
};

void compareDecisions() {
  constexpr int kRounds = 1000;
  const Folder folder;
  PlainDatabase plain((folder.path / "plain.sqlite").string());
  FakePlatform fakes;
  Platform services = fakes.services();
  services.standardUserDefaults =
      std::make_shared<SqliteUserDefaults>((folder.path / "settings.sqlite").string());
  installPlatform(services);
  const auto record = makeRecord({.embed = -1, .count = kRounds + 1, .delay = -1});
  std::vector<double> commits;
  std::vector<double> decisions;
  for (int round = 0; round < kRounds; ++round) {
    commits.push_back(microsecondsOf([&] { plain.commit(round); }));
    const auto presenter = MyPushAdOperator::createInstanceWithHostView(nullptr);
    decisions.push_back(
        microsecondsOf([&] { presenter->processShowAdIfNeededWithPushAdInfo(record); }));
  }
  const double commit = medianOf(commits);
  const double decision = medianOf(decisions);
  std::printf("A decision that counts (1 flush)   %8.1f us\n", decision);
  std::printf("One durable commit, SQLite alone   %8.1f us\n", commit);
  std::printf("Ratio                              %8.2f\n\n", decision / commit);
}

void compareBroadcasts() {
  constexpr std::size_t kReceivers = 10000;
  constexpr int kRounds = 200;
  FakePlatform fakes;
  installPlatform(fakes.services());
  std::vector<std::shared_ptr<FakeView>> hostViews;
  std::vector<std::shared_ptr<MyPushAdOperator>> presenters;
  std::size_t called = 0;
  std::vector<std::function<void(const Notification&)>> emptyCalls;
  const auto record = makeRecord({.version = ""});
  for (std::size_t i = 0; i < kReceivers; ++i) {
    hostViews.push_back(std::make_shared<FakeView>());
    presenters.push_back(MyPushAdOperator::createInstanceWithHostView<MyPushAdOperator>(
        std::shared_ptr<View>(hostViews.back())));
    presenters.back()->processShowAdIfNeededWithPushAdInfo(record);
    emptyCalls.emplace_back([&called](const Notification& /*each*/) { ++called; });
  }
  fakes.runLoop->runUntilIdle();
  const Notification notification(kViewFrameDidChangeNotification, hostViews.front());
  std::vector<double> calls;
  std::vector<double> broadcasts;
  for (int round = 0; round < kRounds; ++round) {
    calls.push_back(microsecondsOf([&] {
      for (const auto& call : emptyCalls) {
        call(notification);
      }
    }));
    broadcasts.push_back(microsecondsOf([&] { fakes.notificationCenter->post(notification); }));
  }
  const double call = medianOf(calls) * 1000 / kReceivers;
  const double broadcast = medianOf(broadcasts) * 1000 / kReceivers;
  std::printf("A frame change, a receiver         %8.1f ns (%zu receivers, %zu empty calls)\n",
              broadcast, kReceivers, called);
  std::printf("An empty call                      %8.1f ns\n", call);
  std::printf("Ratio                              %8.2f\n", broadcast / call);
}

}  // namespace
}  // namespace qorix

int main() {
  qorix::compareDecisions();
  qorix::compareBroadcasts();
}
