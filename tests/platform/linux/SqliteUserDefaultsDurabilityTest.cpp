#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>

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

}  // namespace
}  // namespace qorix
