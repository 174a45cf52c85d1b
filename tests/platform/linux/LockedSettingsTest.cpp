#include <gmock/gmock.h>
#include <sqlite3.h>

#include <chrono>
#include <memory>

#include "fakes/RecordingLog.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "presentation/StoredShownState.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

using ::testing::Optional;

constexpr const char* kDocument = "document";

/// Another program that lets nobody else at a settings file as long as it lives.
class Lock {
 public:
  explicit Lock(const std::string& path) {
    sqlite3_open(path.c_str(), &database_);
    const char* statements = "PRAGMA locking_mode = EXCLUSIVE; BEGIN IMMEDIATE";
    EXPECT_EQ(sqlite3_exec(database_, statements, nullptr, nullptr, nullptr), SQLITE_OK);
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
  ~Lock() { sqlite3_close(database_); }

 private:
  sqlite3* database_ = nullptr;
};

/// A file that holds a document and 3 showings of version 2, locked when the host starts.
class LockedSettingsTest : public ::testing::Test {
 protected:
  LockedSettingsTest() {
    SqliteUserDefaults before(path_, log_);
    before.setString("old", kDocument);
    before.setString("2", kShownVersionKey);
    before.setInteger(3, kShownCountKey);
    EXPECT_TRUE(before.synchronize());
  }

  void open() {
    lock_ = std::make_unique<Lock>(path_);
    store_ = std::make_unique<SqliteUserDefaults>(path_, log_);
  }
  void free() { lock_.reset(); }

  /// What the file holds, for another process.
  std::unique_ptr<SqliteUserDefaults> file() {
    return std::make_unique<SqliteUserDefaults>(path_, log_);
  }

  void expectOneLine() const { EXPECT_EQ(log_->lines().size(), 1U); }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "settings.sqlite";
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
  std::unique_ptr<Lock> lock_;
  std::unique_ptr<SqliteUserDefaults> store_;
};

TEST_F(LockedSettingsTest, isReadOnceItIsFree) {
  open();
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 0);
  expectOneLine();
  free();
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 3);
  expectOneLine();
}

TEST_F(LockedSettingsTest, manyReadsDoNotWaitOneAfterTheOther) {
  open();
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 400; ++i) {
    EXPECT_EQ(store_->integerForKey(kShownCountKey), 0);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(50));
  expectOneLine();
}

// Read once while it was locked, free afterwards.

TEST_F(LockedSettingsTest, aNewDocumentIsSavedOnceItIsFree) {
  open();
  EXPECT_EQ(store_->stringForKey(kDocument), std::nullopt);
  free();
  store_->setString("new", kDocument);
  EXPECT_TRUE(store_->synchronize());
  EXPECT_THAT(store_->stringForKey(kDocument), Optional(std::string("new")));
  EXPECT_THAT(file()->stringForKey(kDocument), Optional(std::string("new")));
}

TEST_F(LockedSettingsTest, aDocumentIsClearedOnceItIsFree) {
  open();
  EXPECT_EQ(store_->stringForKey(kDocument), std::nullopt);
  free();
  store_->removeObjectForKey(kDocument);
  EXPECT_TRUE(store_->synchronize());
  EXPECT_EQ(store_->stringForKey(kDocument), std::nullopt);
  EXPECT_EQ(file()->stringForKey(kDocument), std::nullopt);
}

TEST_F(LockedSettingsTest, aShowingIsCountedOnceItIsFree) {
  open();
  EXPECT_EQ(store_->stringForKey(kDocument), std::nullopt);
  free();
  {
    StoredShownState shown(*store_);
    EXPECT_EQ(decideShow({.enable = true, .version = "2", .count = 9}, shown),
              ShowReason::dueCounted);
  }
  EXPECT_EQ(file()->integerForKey(kShownCountKey), 4);
}

TEST_F(LockedSettingsTest, whatWasSetWhileItWasLockedTakesNothingElseWithIt) {
  open();
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 0);
  store_->setInteger(1, kShownCountKey);
  EXPECT_FALSE(store_->synchronize());
  free();
  store_->setString("new", kDocument);
  EXPECT_FALSE(store_->synchronize()) << "the count has given way";
  EXPECT_TRUE(store_->synchronize());
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 3);
  store_->setInteger(4, kShownCountKey);
  EXPECT_TRUE(store_->synchronize());
  EXPECT_EQ(file()->integerForKey(kShownCountKey), 4);
  EXPECT_THAT(file()->stringForKey(kDocument), Optional(std::string("new")));
}

// Decided while it was locked.

TEST_F(LockedSettingsTest, aValueSetWithoutALookGivesWayToWhatItHolds) {
  open();
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 0);
  store_->setInteger(1, kShownCountKey);
  store_->setInteger(7, "new");
  EXPECT_FALSE(store_->synchronize());
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 1) << "for the time being";
  free();
  EXPECT_FALSE(store_->synchronize()) << "one of the two did not become durable";
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 3);
  EXPECT_EQ(file()->integerForKey(kShownCountKey), 3);
  EXPECT_EQ(file()->integerForKey("new"), 7);
  EXPECT_TRUE(store_->synchronize());
  expectOneLine();
}

TEST_F(LockedSettingsTest, aValueThatGivesWayDuringAReadIsNotCalledDurable) {
  open();
  store_->setInteger(1, kShownCountKey);
  free();
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 3);
  EXPECT_FALSE(store_->synchronize());
  EXPECT_TRUE(store_->synchronize());
}

TEST_F(LockedSettingsTest, aShowingDecidedWithoutALookLosesNothing) {
  open();
  for (int showing = 0; showing < 2; ++showing) {
    StoredShownState shown(*store_);
    decideShow({.enable = true, .version = "2", .count = 3}, shown);
  }
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 2) << "for the time being";
  free();
  StoredShownState shown(*store_);
  EXPECT_EQ(decideShow({.enable = true, .version = "2", .count = 3}, shown), ShowReason::usedUp);
  EXPECT_EQ(file()->integerForKey(kShownCountKey), 3);
  EXPECT_THAT(file()->stringForKey(kShownVersionKey), Optional(std::string("2")));
}

TEST_F(LockedSettingsTest, aDecisionRestsOnItsLookThoughTheFileIsFreeBeforeItsEnd) {
  open();
  {
    StoredShownState shown(*store_);
    EXPECT_EQ(shown.version(), std::nullopt);
    free();
    shown.restart("2", 1);
  }
  EXPECT_EQ(store_->integerForKey(kShownCountKey), 3);
  EXPECT_EQ(file()->integerForKey(kShownCountKey), 3);
}

TEST_F(LockedSettingsTest, whatIsRemovedWithoutALookIsGoneAllTheSame) {
  open();
  store_->setString("new", kDocument);
  store_->removeObjectForKey(kDocument);
  store_->removeObjectForKey(kShownCountKey);
  store_->setInteger(1, kShownCountKey);
  EXPECT_FALSE(store_->synchronize());
  free();
  EXPECT_TRUE(store_->synchronize());
  EXPECT_EQ(file()->stringForKey(kDocument), std::nullopt);
  EXPECT_EQ(file()->integerForKey(kShownCountKey), 1) << "set where nothing was left";
  EXPECT_THAT(file()->stringForKey(kShownVersionKey), Optional(std::string("2")));
}

}  // namespace
}  // namespace qorix
