// SQLite has no memory, and neither have we, at every allocation in turn.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <new>
#include <string>

#include "fakes/RecordingLog.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "support/FailingMemory.h"
#include "support/Rounds.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

sqlite3_mem_methods original{};
long sqliteAllocationsLeft = -1;  // negative: all succeed

bool isSqliteToFail() { return sqliteAllocationsLeft >= 0 && sqliteAllocationsLeft-- == 0; }
void* failingMalloc(int size) { return isSqliteToFail() ? nullptr : original.xMalloc(size); }
void* failingRealloc(void* memory, int size) {
  return isSqliteToFail() ? nullptr : original.xRealloc(memory, size);
}

void makeSqliteAllocationsFail() {
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &original);
  sqlite3_mem_methods methods = original;
  methods.xMalloc = failingMalloc;
  methods.xRealloc = failingRealloc;
  sqlite3_config(SQLITE_CONFIG_MALLOC, &methods);
}

class SettingsMemoryTest : public ::testing::Test {
 protected:
  SettingsMemoryTest() {
    static const bool isSet = (makeSqliteAllocationsFail(), true);
    static_cast<void>(isSet);
  }

  /// Opens, counts as a showing does, and closes. Short of memory only if `begin` makes it so.
  template <class Begin, class HasFailed>
  void countWithEachFailure(int stride, Begin begin, HasFailed endShortage) {
    std::int64_t last = 0;
    for (long allocation = 0;; allocation += stride) {
      begin(allocation);
      bool isStored = false;
      try {
        SqliteUserDefaults settings(path_, log_);
        settings.setInteger(settings.integerForKey("count") + 1, "count");
        isStored = settings.synchronize();
      } catch (const std::bad_alloc&) {  // of `setInteger`: nothing was set
        isStored = false;
      }
      const bool hasFailed = endShortage();
      const std::int64_t now = SqliteUserDefaults(path_, log_).integerForKey("count");
      ASSERT_GE(now, isStored ? last + 1 : last) << allocation;
      ASSERT_LE(now, last + 1) << allocation;
      last = now;
      if (!hasFailed) {
        ASSERT_TRUE(isStored);
        EXPECT_GT(allocation, 10);
        return;
      }
    }
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_ / "settings.sqlite";
  const std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
};

TEST_F(SettingsMemoryTest, noCountIsLostOrDoubledWithoutOurMemory) {
  countWithEachFailure(
      1, [](long allocation) { test::failAllocations(allocation, 1); },
      [] { return test::stopFailingAllocations(); });
}

TEST_F(SettingsMemoryTest, noCountIsLostOrDoubledWithoutSqlitesMemory) {
  countWithEachFailure(
      test::rounds(9, 1), [](long allocation) { sqliteAllocationsLeft = allocation; },
      [] {
        const bool hasFailed = sqliteAllocationsLeft == -1;
        sqliteAllocationsLeft = -1;
        return hasFailed;
      });
}

}  // namespace
}  // namespace qorix
