#include <gtest/gtest.h>

#include <limits>

#include "presentation/ShowDecision.h"

namespace qorix {
namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

ShowTerms terms(const char* version, std::int64_t count) { return {true, version, count}; }

TEST(ShowDecisionTest, disabledIsNeverDueAndChangesNothing) {
  const auto decision = decideShow({false, "3", 5}, {"3", 0});
  EXPECT_EQ(decision.reason, ShowReason::disabled);
  EXPECT_FALSE(decision.isDue());
  EXPECT_TRUE(decision.changes.empty());
  EXPECT_FALSE(isCounted({false, "3", 5}));
}

TEST(ShowDecisionTest, withoutVersionItIsAlwaysDueAndNotCounted) {
  for (const auto& version : {std::optional<std::string>(), std::optional<std::string>("")}) {
    const auto decision = decideShow({true, version, 0}, {"3", 99});
    EXPECT_EQ(decision.reason, ShowReason::dueUncounted);
    EXPECT_TRUE(decision.isDue());
    EXPECT_TRUE(decision.changes.empty());
    EXPECT_FALSE(isCounted({true, version, 0}));
  }
}

TEST(ShowDecisionTest, theFirstShowingIsGrantedWhateverTheCount) {
  for (const std::int64_t count : {std::int64_t{-3}, std::int64_t{0}, kLargest}) {
    const auto decision = decideShow(terms("3", count), {});
    EXPECT_EQ(decision.reason, ShowReason::dueFirst);
    ASSERT_EQ(decision.changes.size(), 1U);
    EXPECT_EQ(decision.changes[0].version, "3");
    EXPECT_EQ(decision.changes[0].count, 1);
  }
  EXPECT_EQ(decideShow(terms("3", 0), {"", 7}).reason, ShowReason::dueFirst);
}

TEST(ShowDecisionTest, theSameVersionIsDueUntilItsCountIsSpent) {
  const auto due = decideShow(terms("3", 2), {"3", 1});
  EXPECT_EQ(due.reason, ShowReason::dueCounted);
  ASSERT_EQ(due.changes.size(), 1U);
  EXPECT_EQ(due.changes[0].version, std::nullopt);
  EXPECT_EQ(due.changes[0].count, 2);

  const auto spent = decideShow(terms("3", 2), {"3", 2});
  EXPECT_EQ(spent.reason, ShowReason::usedUp);
  EXPECT_FALSE(spent.isDue());
  EXPECT_TRUE(spent.changes.empty());
  EXPECT_EQ(decideShow(terms("3", 2), {"3", 3}).reason, ShowReason::usedUp);
}

TEST(ShowDecisionTest, anotherVersionStartsAgainFromZeroWithTwoChanges) {
  for (const char* version : {"2", "4"}) {
    const auto decision = decideShow(terms(version, 1), {"3", 9});
    EXPECT_EQ(decision.reason, ShowReason::dueNewVersion);
    ASSERT_EQ(decision.changes.size(), 2U);
    EXPECT_EQ(decision.changes[0].version, version);
    EXPECT_EQ(decision.changes[0].count, 0);
    EXPECT_EQ(decision.changes[1].version, std::nullopt);
    EXPECT_EQ(decision.changes[1].count, 1);
  }
}

TEST(ShowDecisionTest, anotherVersionWithoutCountIsRememberedButNotDue) {
  const auto decision = decideShow(terms("4", 0), {"3", 9});
  EXPECT_EQ(decision.reason, ShowReason::usedUp);
  ASSERT_EQ(decision.changes.size(), 1U);
  EXPECT_EQ(decision.changes[0].version, "4");
  EXPECT_EQ(decision.changes[0].count, 0);
}

TEST(ShowDecisionTest, countsAreComparedSigned) {
  EXPECT_EQ(decideShow(terms("3", -1), {"3", -2}).reason, ShowReason::dueCounted);
  EXPECT_EQ(decideShow(terms("3", kLargest), {"3", kLargest}).reason, ShowReason::usedUp);
  EXPECT_EQ(decideShow(terms("3", kLargest), {"3", kLargest - 1}).changes[0].count, kLargest);
}

}  // namespace
}  // namespace qorix
