#include <gmock/gmock.h>

#include "platform/NotificationCenter.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NotificationCenterTest : public ::testing::Test {
 protected:
  NotificationCenter::Observation observe(const std::string& name, const std::string& mark) {
    return center_.addObserver(
        name, [this, mark](const Notification& /*each*/) { heard_.push_back(mark); });
  }

  void post(const std::string& name) { center_.post(Notification(name, nullptr)); }

  NotificationCenter center_;
  std::vector<std::string> heard_;
};

TEST_F(NotificationCenterTest, callsTheHandlersOfTheNameInOrder) {
  observe("a", "first");
  observe("b", "other");
  observe("a", "second");
  post("a");
  EXPECT_THAT(heard_, ElementsAre("first", "second"));
  post("unheard of");
  EXPECT_EQ(heard_.size(), 2U);
}

TEST_F(NotificationCenterTest, aRemovedHandlerIsNotCalled) {
  const auto first = observe("a", "first");
  observe("a", "second");
  center_.removeObserver("a", first);
  center_.removeObserver("a", first);
  center_.removeObserver("a", 99);
  center_.removeObserver("unheard of", 1);
  post("a");
  EXPECT_THAT(heard_, ElementsAre("second"));
}

TEST_F(NotificationCenterTest, aHandlerMayRemoveItselfAndLaterOnes) {
  NotificationCenter::Observation self = 0;
  NotificationCenter::Observation later = 0;
  self = center_.addObserver("a", [&](const Notification& /*each*/) {
    heard_.emplace_back("once");
    center_.removeObserver("a", self);
    center_.removeObserver("a", later);
  });
  later = observe("a", "removed");
  observe("a", "kept");
  post("a");
  post("a");
  EXPECT_THAT(heard_, ElementsAre("once", "kept", "kept"));
}

TEST_F(NotificationCenterTest, aHandlerAddedMeanwhileHearsTheNextOne) {
  center_.addObserver("a", [&](const Notification& /*each*/) {
    for (int i = 0; i < 100; ++i) {
      observe("a", "new");
    }
  });
  post("a");
  EXPECT_THAT(heard_, IsEmpty());
}

TEST_F(NotificationCenterTest, aHandlerMayPost) {
  center_.addObserver("a", [&](const Notification& /*each*/) {
    heard_.emplace_back("a");
    post("b");
  });
  observe("b", "b");
  observe("a", "a again");
  post("a");
  EXPECT_THAT(heard_, ElementsAre("a", "b", "a again"));
}

}  // namespace
}  // namespace qorix
