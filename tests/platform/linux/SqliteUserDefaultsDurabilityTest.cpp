#include <gmock/gmock.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "fakes/RecordingLog.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "support/TemporaryFolder.h"

namespace {
int gSyncs = 0;
}

// Stand in for the system's own in the whole process, SQLite included.
extern "C" int fdatasync(int descriptor) {
  ++gSyncs;
  return static_cast<int>(::syscall(SYS_fdatasync, descriptor));
}
extern "C" int fsync(int descriptor) {
  ++gSyncs;
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace qorix {
namespace {

std::uint32_t bigEndian(const std::string& bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    value = value << 8 | static_cast<unsigned char>(bytes.at(offset + i));
  }
  return value;
}

/// The number of commits in a write-ahead log that has not started over: the frames that name the
/// size of the file after a commit.
int commitsIn(const std::string& logPath) {
  std::ifstream stream(logPath, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(stream), {});
  constexpr std::size_t kHeader = 32;
  constexpr std::size_t kFrameHeader = 24;
  if (bytes.size() < kHeader) {
    return 0;
  }
  const std::size_t frame = kFrameHeader + bigEndian(bytes, 8);
  int commits = 0;
  for (std::size_t offset = kHeader; offset + frame <= bytes.size(); offset += frame) {
    commits += bigEndian(bytes, offset + 4) == 0 ? 0 : 1;
  }
  return commits;
}

class SqliteUserDefaultsDurabilityTest : public ::testing::Test {
 protected:
  TemporaryFolder folder_;
  std::string path_ = folder_ / "settings.sqlite";
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
};

TEST_F(SqliteUserDefaultsDurabilityTest, eachSynchronizeWithChangesIsOneCommit) {
  SqliteUserDefaults store(path_, log_);
  const int before = commitsIn(path_ + "-wal");
  for (int i = 1; i <= 5; ++i) {
    store.setInteger(i, "count");
    store.setString(std::to_string(i), "version");
    store.removeObjectForKey("other");
    EXPECT_EQ(commitsIn(path_ + "-wal"), before + i - 1);
    EXPECT_TRUE(store.synchronize());
    EXPECT_EQ(commitsIn(path_ + "-wal"), before + i);
  }
}

TEST_F(SqliteUserDefaultsDurabilityTest, withoutChangesThereIsNoCommit) {
  SqliteUserDefaults store(path_, log_);
  store.setInteger(1, "count");
  EXPECT_TRUE(store.synchronize());
  const int before = commitsIn(path_ + "-wal");
  ASSERT_GT(before, 0);
  EXPECT_TRUE(store.synchronize());
  EXPECT_EQ(store.integerForKey("count"), 1);
  EXPECT_EQ(store.stringForKey("version"), std::nullopt);
  EXPECT_TRUE(store.synchronize());
  EXPECT_EQ(commitsIn(path_ + "-wal"), before);
}

TEST_F(SqliteUserDefaultsDurabilityTest, eachCommitWaitsOnceForTheDisk) {
  SqliteUserDefaults store(path_, log_);
  store.setInteger(0, "count");
  store.synchronize();  // the log's first commit also writes its header
  for (int i = 1; i <= 5; ++i) {
    const int before = gSyncs;
    store.setInteger(i, "count");
    EXPECT_EQ(gSyncs, before);
    EXPECT_TRUE(store.synchronize());
    EXPECT_EQ(gSyncs, before + 1);
    EXPECT_TRUE(store.synchronize());
    EXPECT_EQ(gSyncs, before + 1);
  }
}

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

TEST_F(SqliteUserDefaultsDurabilityTest, aKilledProcessLosesNoCommittedValue) {
  constexpr int kRounds = 60;
  std::mt19937 random(20'240'501);  // the same moments each time, as far as the machine allows
  std::int64_t last = 0;
  for (int round = 0; round < kRounds; ++round) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::close(ends[0]);
      countUntilKilled(path_, ends[1]);
    }
    ::close(ends[1]);
    // Somewhere in the commits that follow: no pause between the last report and the kill.
    for (auto reports = random() % 40 + 1; reports > 0; --reports) {
      ASSERT_EQ(::read(ends[0], &last, sizeof last), static_cast<ssize_t>(sizeof last));
    }
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
    // All values of one commit, or none of them.
    ASSERT_EQ(store.stringForKey("text"), std::to_string(count) + std::string(6'000, 'x'));
    ASSERT_EQ(store.stringArrayForKey("list"), std::vector{std::to_string(count)});
  }
  EXPECT_THAT(log_->lines(), ::testing::IsEmpty());
}

}  // namespace
}  // namespace qorix
