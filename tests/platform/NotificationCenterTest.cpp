#include <gmock/gmock.h>

#include <stdexcept>
#include <utility>

#include "fakes/RecordingLog.h"
#include "platform/Platform.h"

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

TEST_F(NotificationCenterTest, anObserverRemovedInANestedPostDisplacesNoneOfTheOuterOne) {
  const auto earlier = observe("a", "earlier");
  bool isNested = false;
  center_.addObserver("a", [&](const Notification& /*each*/) {
    if (!std::exchange(isNested, true)) {
      center_.removeObserver("a", earlier);
      post("a");
      heard_.emplace_back("nested post has ended");
    }
  });
  observe("a", "next");
  observe("a", "last");
  post("a");
  EXPECT_THAT(heard_,
              ElementsAre("earlier", "next", "last", "nested post has ended", "next", "last"));
  EXPECT_EQ(center_.countObservers(), 3U);
}

TEST_F(NotificationCenterTest, whatAnObserverThrowsIsLoggedAndTheOthersHearThePost) {
  const auto log = std::make_shared<RecordingLog>();
  Platform services;
  services.log = log;
  installPlatform(services);
  NotificationCenter::Observation self = 0;
  self = center_.addObserver("a", [&](const Notification& /*each*/) {
    center_.removeObserver("a", self);
    throw std::runtime_error("of the host");
  });
  observe("a", "second");
  post("a");
  post("a");
  EXPECT_THAT(heard_, ElementsAre("second", "second"));
  EXPECT_THAT(log->lines(), ElementsAre("ZAM An exception was stopped: of the host"));
  EXPECT_EQ(center_.countObservers(), 1U);
}

}  // namespace
}  // namespace qorix
