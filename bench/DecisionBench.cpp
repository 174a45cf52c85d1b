// What a decision costs that counts a showing, beside one durable commit of the same settings.

#include <sqlite3.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <qorix/MyPushAdOperator.h>

#include "fakes/FakePlatform.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "support/Measuring.h"
#include "support/Records.h"
#include "support/TemporaryFolder.h"

namespace qorix::bench {
namespace {

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

void compare() {
  const int count = rounds(1000);
  const TemporaryFolder folder;
  PlainDatabase plain(folder / "plain.sqlite");
  FakePlatform fakes;
  Platform services = fakes.services();
  services.standardUserDefaults = std::make_shared<SqliteUserDefaults>(folder / "settings.sqlite");
  installPlatform(services);
  const auto record = makeRecord({.embed = -1, .count = 1'000'000, .delay = -1});
  std::vector<double> commits;
  std::vector<double> decisions;
  for (int round = 0; round < count; ++round) {
    commits.push_back(microsecondsOf([&] { plain.commit(round); }));
    const auto presenter = MyPushAdOperator::createInstanceWithHostView(nullptr);
    decisions.push_back(
        microsecondsOf([&] { presenter->processShowAdIfNeededWithPushAdInfo(record); }));
  }
  printHeading("Deciding on an advertisement that is counted", "us");
  printRow({"counted and flushed", medianOf(decisions), "a durable commit, SQLite alone",
            medianOf(commits)});
}

}  // namespace
}  // namespace qorix::bench

int main() { return qorix::bench::report(qorix::bench::compare); }
