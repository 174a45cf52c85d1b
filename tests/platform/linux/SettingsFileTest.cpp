// What is read of a settings file that cannot be opened for want of room beside it.

#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "fakes/RecordingLog.h"
#include "platform/linux/SettingsFile.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

namespace fs = std::filesystem;

using ::testing::Optional;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;
using ::testing::VariantWith;

class SettingsFileTest : public ::testing::Test {
 protected:
  std::unique_ptr<SqliteUserDefaults> open(const std::string& path) const {
    return std::make_unique<SqliteUserDefaults>(path, log_);
  }
  void makeFile() const {
    const auto store = open(path_);
    store->setInteger(3, "count");
    ASSERT_TRUE(store->synchronize());
  }
  static std::string bytesOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "settings.sqlite";
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
};

TEST_F(SettingsFileTest, whatIsReadOfAKilledHostsFileStaysAsItIs) {
  const std::string killed = folder_ / "killed.sqlite";
  const auto store = open(killed);
  store->setInteger(3, "count");
  ASSERT_TRUE(store->synchronize());
  for (const char* companion : {"", "-wal"}) {
    fs::copy(killed + companion, path_ + companion);
  }
  const std::string log = bytesOf(path_ + "-wal");
  const std::string file = bytesOf(path_);
  ASSERT_FALSE(log.empty());
  EXPECT_THAT(SettingsFile::contentsAt(path_),
              Optional(UnorderedElementsAre(Pair("count", VariantWith<std::int64_t>(3)))));
  EXPECT_TRUE(bytesOf(path_) == file);
  EXPECT_TRUE(bytesOf(path_ + "-wal") == log);
  EXPECT_FALSE(fs::exists(path_ + "-shm"));
}

TEST_F(SettingsFileTest, whatAnotherConnectionHasOpenIsLeftAlone) {
  makeFile();
  EXPECT_NE(SettingsFile::contentsAt(path_), std::nullopt);
  const auto other = open(path_);
  EXPECT_EQ(SettingsFile::contentsAt(path_), std::nullopt);
  other->setInteger(4, "count");
  EXPECT_TRUE(other->synchronize());
}

TEST_F(SettingsFileTest, nothingIsReadOfADamagedFile) {
  makeFile();
  constexpr std::streamoff kEndOfIndex = 3L * 4'096;  // the third page, behind schema and table
  std::fstream(path_, std::ios::binary | std::ios::in | std::ios::out)
      .seekp(kEndOfIndex - 100)
      .write(std::string(100, '\0').data(), 100);
  EXPECT_EQ(SettingsFile::contentsAt(path_), std::nullopt);
}

TEST_F(SettingsFileTest, nothingIsMadeWhereThereIsNoFile) {
  EXPECT_EQ(SettingsFile::contentsAt(path_), std::nullopt);
  EXPECT_TRUE(fs::is_empty(folder_.path()));
}

}  // namespace
}  // namespace qorix
