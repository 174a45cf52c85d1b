// Settings under faults that depend on chance: kills, several processes, damage anywhere.

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include <qorix/MyPushAdInfo.h>
#include <qorix/platform/Platform.h>

#include "fakes/RecordingLog.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "presentation/StoredShownState.h"
#include "support/Rounds.h"
#include "support/TemporaryFolder.h"

namespace qorix::test {
namespace {

namespace fs = std::filesystem;

using ::testing::IsEmpty;

class SettingsFaultsTest : public ::testing::Test {
 protected:
  std::string contents() const {
    std::ifstream stream(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void write(const std::string& bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }
  void removeAll() const {
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
      fs::remove(entry.path());
    }
  }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "settings.sqlite";
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
};

/// Commits the next count again and again, telling it through `report` after each commit.
[[noreturn]] void countUntilKilled(const std::string& path, int report) {
  SqliteUserDefaults store(path, std::make_shared<RecordingLog>());
  for (auto count = store.integerForKey("count") + 1;; ++count) {
    store.setInteger(count, "count");
    store.setString(std::to_string(count) + std::string(6'000, 'x'), "text");
    store.setStringArray({std::to_string(count)}, "list");
    if (!store.synchronize() || ::write(report, &count, sizeof count) != sizeof count) {
      ::_exit(1);
    }
  }
}

TEST_F(SettingsFaultsTest, aKilledProcessLosesNoCommittedValue) {
  const int many = rounds(30, 1'000);
  std::mt19937 random(20'240'501);  // the same moments each time, as far as the machine allows
  std::int64_t last = 0;
  for (int round = 0; round < many; ++round) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::close(ends[0]);
      countUntilKilled(path_, ends[1]);
    }
    ::close(ends[1]);
    // Somewhere in the commits that follow, and in the time after one.
    for (auto reports = random() % 20 + 1; reports > 0; --reports) {
      ASSERT_EQ(::read(ends[0], &last, sizeof last), static_cast<ssize_t>(sizeof last));
    }
    ::usleep(static_cast<useconds_t>(random() % 2'000));
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    while (::read(ends[0], &last, sizeof last) == static_cast<ssize_t>(sizeof last)) {
    }
    ::close(ends[0]);

    SqliteUserDefaults store(path_, log_);
    const auto count = store.integerForKey("count");
    ASSERT_GE(count, last);
    ASSERT_LE(count, last + 1);
    ASSERT_EQ(store.stringForKey("text"), std::to_string(count) + std::string(6'000, 'x'));
    ASSERT_EQ(store.stringArrayForKey("list"), std::vector{std::to_string(count)});
    ASSERT_THAT(log_->lines(), IsEmpty());
  }
  std::printf("%d kills, %lld commits\n", many, static_cast<long long>(last));
}

/// Decides `times` that a showing of that version is due, as a host does.
[[noreturn]] void decideInChild(const std::string& path, const char* version, int times,
                                int start) {
  char byte = 0;
  static_cast<void>(::read(start, &byte, 1));  // all begin when the last one is there
  Platform services;
  const auto log = std::make_shared<RecordingLog>();
  services.log = log;
  services.standardUserDefaults = std::make_shared<SqliteUserDefaults>(path, log);
  installPlatform(services);
  MyPushAdInfo info;
  info.setEnable(true);
  info.setVersion(version);
  info.setCount(1'000'000'000);
  for (int i = 0; i < times; ++i) {
    if (!isDue(decideAndCount(info))) {
      ::_exit(1);
    }
  }
  ::_exit(log->lines().empty() ? 0 : 2);
}

/// Returns the count that is stored after `processes` have decided `times` each, all at once.
std::int64_t countOf(const std::string& path, const char* version, int processes, int times) {
  int start[2];
  EXPECT_EQ(::pipe(start), 0);
  std::vector<pid_t> children;
  for (int i = 0; i < processes; ++i) {
    children.push_back(::fork());
    if (children.back() == 0) {
      ::close(start[1]);
      decideInChild(path, version, times, start[0]);
    }
  }
  ::close(start[0]);
  ::close(start[1]);
  for (const pid_t child : children) {
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  return SqliteUserDefaults(path, std::make_shared<RecordingLog>()).integerForKey(kShownCountKey);
}

// In memory, so that nobody waits longer for the disk than for the others.
TEST_F(SettingsFaultsTest, severalProcessesAtOnceCountEachShowingOnce) {
  std::string folder = "/dev/shm/qorix-test-XXXXXX";
  ASSERT_NE(::mkdtemp(folder.data()), nullptr);
  constexpr int kTimes = 40;
  const int many = rounds(3, 200);
  for (int round = 0; round < many; ++round) {
    for (const int processes : {2, 10}) {
      const std::string path =
          folder + "/" + std::to_string(round) + "-" + std::to_string(processes);
      ASSERT_EQ(countOf(path, "1", processes, kTimes), processes * kTimes);
      ASSERT_EQ(countOf(path, "2", processes, 1), processes) << "a new version";
    }
  }
  fs::remove_all(folder);
}

// Whatever becomes of a part of the file: what is read was once saved, what is saved is there, and
// one line says so when the file had to be given up.
TEST_F(SettingsFaultsTest, damageAnywhereIsSeenOrChangesNothing) {
  {
    SqliteUserDefaults store(path_, log_);
    store.setString(std::string(9'000, 'x'), "text");
    store.setInteger(3, "count");
    ASSERT_TRUE(store.synchronize());
  }
  const std::string whole = contents();
  const auto step = static_cast<std::size_t>(rounds(512, 16));
  int seen = 0;
  for (std::size_t at = 0; at < whole.size(); at += step) {
    for (const int kind : {0, 1, 2}) {
      SCOPED_TRACE(testing::Message() << "at " << at << ", kind " << kind);
      std::string damaged = whole;
      const auto end = std::min(whole.size(), at + step);
      if (kind == 0) {
        damaged.resize(at);
      } else {
        std::transform(damaged.begin() + static_cast<std::ptrdiff_t>(at),
                       damaged.begin() + static_cast<std::ptrdiff_t>(end),
                       damaged.begin() + static_cast<std::ptrdiff_t>(at),
                       [kind](char c) { return kind == 1 ? '\0' : static_cast<char>(~c); });
      }
      removeAll();
      write(damaged);
      const auto log = std::make_shared<RecordingLog>();
      {
        SqliteUserDefaults store(path_, log);
        const auto count = store.integerForKey("count");
        ASSERT_TRUE(count == 3 || (count == 0 && (log->lines().size() == 1 || damaged.empty())))
            << count;
        store.setInteger(4, "count");
        ASSERT_TRUE(store.synchronize());
      }
      ASSERT_LE(log->lines().size(), 1U);
      seen += static_cast<int>(log->lines().size());
      SqliteUserDefaults store(path_, log);
      ASSERT_EQ(store.integerForKey("count"), 4);
    }
  }
  EXPECT_GT(seen, 0);
}

}  // namespace
}  // namespace qorix::test
