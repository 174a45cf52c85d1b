// The settings file on a small disk that is full.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "fakes/RecordingLog.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "support/Rounds.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;

ssize_t writeNothing(int /*file*/, const void* /*bytes*/, std::size_t /*size*/, off_t /*offset*/) {
  errno = ENOSPC;
  return -1;
}

void setSqlitesWrite(sqlite3_syscall_ptr write) {
  sqlite3_vfs* system = sqlite3_vfs_find(nullptr);
  for (const char* call : {"pwrite", "pwrite64", "write"}) {
    system->xSetSystemCall(system, call, write);
  }
}

/// A folder whose disk can be full: in the long form a real disk of one megabyte, which root
/// alone can mount. This process alone sees it.
class SmallDisk {
 public:
  SmallDisk() {
    if (kIsReal) {
      const bool isMounted = ::unshare(CLONE_NEWNS) == 0 &&
                             ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             ::mount("none", folder_.path().c_str(), "tmpfs", 0, "size=1m") == 0;
      if (!isMounted) {
        throw std::runtime_error(std::string("no disk can be mounted: ") + std::strerror(errno));
      }
    }
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() {
    if (kIsReal) {
      ::umount2(folder_.path().c_str(), MNT_DETACH);
    }
  }

  std::string operator/(const std::string& name) const { return folder_ / name; }

  void fill() const {
    if (!kIsReal) {
      setSqlitesWrite(reinterpret_cast<sqlite3_syscall_ptr>(writeNothing));
      return;
    }
    const int filler = ::open((folder_ / "filler").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    ASSERT_GE(filler, 0);
    const std::vector<char> bytes(4096);
    for (int i = 0; i < 512 && ::write(filler, bytes.data(), bytes.size()) > 0; ++i) {
    }
    EXPECT_EQ(errno, ENOSPC);
    ::close(filler);
  }
  void empty() const {
    setSqlitesWrite(nullptr);
    std::filesystem::remove(folder_ / "filler");
  }

 private:
  inline static const bool kIsReal = test::rounds(0, 1) > 0;

  TemporaryFolder folder_;
};

class FullDiskTest : public ::testing::Test {
 protected:
  std::unique_ptr<SqliteUserDefaults> open() const {
    return std::make_unique<SqliteUserDefaults>(path_, log_);
  }
  /// Expects that nothing was logged but that line.
  void expectLine(const char* why) const {
    EXPECT_THAT(log_->lines(), ElementsAre("Settings file " + path_ + " cannot be used (" + why +
                                           "); settings are kept in memory for now."));
  }
  /// Expects that a host which starts now reads `count`, logs why it cannot do more, counts on, and
  /// loses nothing.
  void expectStart(int count, const char* why) const {
    const auto store = open();
    EXPECT_EQ(store->integerForKey("count"), count);
    store->setInteger(4, "count");
    EXPECT_FALSE(store->synchronize());
    EXPECT_EQ(store->integerForKey("count"), 4);
    expectLine(why);
    disk_.empty();
    EXPECT_TRUE(store->synchronize());
    EXPECT_EQ(open()->integerForKey("count"), 4);
  }

  SmallDisk disk_;
  std::string path_ = disk_ / "com.example.editor.sqlite";
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
};

TEST_F(FullDiskTest, valuesWaitUntilThereIsRoom) {
  const auto store = open();
  store->setInteger(3, "count");
  store->setString(std::string(50'000, 'x'), "text");
  ASSERT_TRUE(store->synchronize());
  disk_.fill();
  store->setInteger(4, "count");
  store->setString(std::string(150'000, 'y'), "text");
  EXPECT_FALSE(store->synchronize());
  EXPECT_FALSE(store->synchronize());
  EXPECT_EQ(store->integerForKey("count"), 4);
  expectLine("database or disk is full");
  EXPECT_EQ(open()->integerForKey("count"), 3) << "what another connection sees";
  disk_.empty();
  EXPECT_TRUE(store->synchronize());
  EXPECT_EQ(open()->integerForKey("count"), 4);
  EXPECT_EQ(open()->stringForKey("text"), std::string(150'000, 'y'));
}

TEST_F(FullDiskTest, aHostThatStartsReadsItsValues) {
  {
    const auto store = open();
    store->setInteger(3, "count");
    ASSERT_TRUE(store->synchronize());
  }
  disk_.fill();
  expectStart(3, "no room for its shared memory");
}

TEST_F(FullDiskTest, aHostThatStartsAfterAKillReadsItsValues) {
  {
    SqliteUserDefaults store(disk_ / "killed.sqlite", log_);
    store.setInteger(3, "count");
    ASSERT_TRUE(store.synchronize());
    for (const char* companion : {"", "-wal"}) {
      std::filesystem::copy((disk_ / "killed.sqlite") + companion, path_ + companion);
    }
  }
  disk_.fill();
  expectStart(3, "no room for its shared memory");
}

TEST_F(FullDiskTest, whatWasSetBlindlyGivesWayToWhatIsRead) {
  const std::string elsewhere = disk_ / "elsewhere.sqlite";
  {
    SqliteUserDefaults store(elsewhere, log_);
    store.setInteger(3, "count");
    ASSERT_TRUE(store.synchronize());
  }
  std::filesystem::create_directory(path_);  // the file cannot be read yet
  const auto store = open();
  store->setInteger(1, "count");
  log_->takeLines();
  disk_.fill();
  std::filesystem::remove(path_);
  std::filesystem::rename(elsewhere, path_);
  EXPECT_EQ(store->integerForKey("count"), 3);
  store->setInteger(4, "count");
  disk_.empty();
  EXPECT_FALSE(store->synchronize()) << "a value has given way";
  EXPECT_EQ(open()->integerForKey("count"), 4);
}

TEST_F(FullDiskTest, aFirstStartKeepsItsValues) {
  disk_.fill();
  expectStart(0, "database or disk is full");
}

}  // namespace
}  // namespace qorix
