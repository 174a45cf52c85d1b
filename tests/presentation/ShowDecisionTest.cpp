#include <gmock/gmock.h>

#include <limits>
#include <vector>

#include "presentation/ShowDecision.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int64_t kLargestCount = std::numeric_limits<std::int64_t>::max();

/// What a machine remembers, and what is done to it.
class Memory : public ShownState {
 public:
  Memory() = default;
  Memory(const char* version, std::int64_t count) : version_(version), count_(count) {}

  std::optional<std::string> version() override {
    calls.emplace_back("version?");
    return version_;
  }
  std::int64_t count() override {
    calls.emplace_back("count?");
    return count_;
  }
  void restart(const std::string& version, std::int64_t count) override {
    calls.push_back(version + " " + std::to_string(count));
    version_ = version;
    count_ = count;
  }
  void setCount(std::int64_t count) override {
    calls.push_back(std::to_string(count));
    count_ = count;
  }

  std::vector<std::string> calls;

 private:
  std::optional<std::string> version_;
  std::int64_t count_ = 0;
};

ShowTerms terms(const char* version, std::int64_t count) { return {true, version, count}; }

ShowReason decide(const ShowTerms& terms, Memory memory) { return decideShow(terms, memory); }

TEST(ShowDecisionTest, disabledIsNeverDueAndRemembersNothing) {
  Memory memory("3", 0);
  EXPECT_EQ(decideShow({false, "3", 5}, memory), ShowReason::disabled);
  EXPECT_FALSE(isDue(ShowReason::disabled));
  EXPECT_THAT(memory.calls, IsEmpty());
}

TEST(ShowDecisionTest, withoutVersionItIsAlwaysDueAndNotCounted) {
  for (const auto& version : {std::optional<std::string>(), std::optional<std::string>("")}) {
    Memory memory("3", 99);
    EXPECT_EQ(decideShow({true, version, 0}, memory), ShowReason::dueUncounted);
    EXPECT_THAT(memory.calls, IsEmpty());
  }
  EXPECT_TRUE(isDue(ShowReason::dueUncounted));
}

TEST(ShowDecisionTest, theFirstShowingIsGrantedWhateverTheCount) {
  for (const std::int64_t count : {std::int64_t{-3}, std::int64_t{0}, kLargestCount}) {
    Memory memory;
    EXPECT_EQ(decideShow(terms("3", count), memory), ShowReason::dueFirst);
    EXPECT_THAT(memory.calls, ElementsAre("version?", "3 1"));
  }
  EXPECT_EQ(decide(terms("3", 0), {"", 7}), ShowReason::dueFirst);
  EXPECT_TRUE(isDue(ShowReason::dueFirst));
}

TEST(ShowDecisionTest, theSameVersionIsDueUntilItsCountIsSpent) {
  Memory memory("3", 1);
  EXPECT_EQ(decideShow(terms("3", 2), memory), ShowReason::dueCounted);
  EXPECT_EQ(decideShow(terms("3", 2), memory), ShowReason::usedUp);
  EXPECT_THAT(memory.calls, ElementsAre("version?", "count?", "2", "version?", "count?"));
  EXPECT_TRUE(isDue(ShowReason::dueCounted));
  EXPECT_FALSE(isDue(ShowReason::usedUp));
  EXPECT_EQ(decide(terms("3", 2), {"3", 3}), ShowReason::usedUp);
}

TEST(ShowDecisionTest, anotherVersionStartsAgainFromZero) {
  for (const char* version : {"2", "4"}) {
    Memory memory("3", 9);
    EXPECT_EQ(decideShow(terms(version, 1), memory), ShowReason::dueNewVersion);
    EXPECT_THAT(memory.calls, ElementsAre("version?", std::string(version) + " 0", "count?", "1"));
  }
  EXPECT_TRUE(isDue(ShowReason::dueNewVersion));
}

TEST(ShowDecisionTest, anotherVersionWithoutCountIsRememberedButNotDue) {
  Memory memory("3", 9);
  EXPECT_EQ(decideShow(terms("4", 0), memory), ShowReason::usedUp);
  EXPECT_THAT(memory.calls, ElementsAre("version?", "4 0", "count?"));
}

TEST(ShowDecisionTest, countsAreComparedSigned) {
  EXPECT_EQ(decide(terms("3", -1), {"3", -2}), ShowReason::dueCounted);
  EXPECT_EQ(decide(terms("3", kLargestCount), {"3", kLargestCount}), ShowReason::usedUp);
  EXPECT_EQ(decide(terms("3", kLargestCount), {"3", kLargestCount - 1}), ShowReason::dueCounted);
}

}  // namespace
}  // namespace qorix
