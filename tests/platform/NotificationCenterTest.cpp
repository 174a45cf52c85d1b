#include <gmock/gmock.h>

#include <stdexcept>
#include <utility>

#include <qorix/platform/Platform.h>

#include "fakes/RecordingLog.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NotificationCenterTest : public ::testing::Test {
 protected:
  void observe(const std::string& name, const std::string& mark) {
    observeForAWhile(name, mark).keep();
  }

  NotificationObservation observeForAWhile(const std::string& name, const std::string& mark) {
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
  auto first = observeForAWhile("a", "first");
  observe("a", "second");
  first.end();
  first.end();
  NotificationObservation().end();
  post("a");
  EXPECT_THAT(heard_, ElementsAre("second"));
}

TEST_F(NotificationCenterTest, anObservationEndsWithItsOwner) {
  {
    const auto first = observeForAWhile("a", "first");
    post("a");
  }
  post("a");
  EXPECT_THAT(heard_, ElementsAre("first"));
  EXPECT_EQ(center_.countObservers(), 0U);
}

TEST_F(NotificationCenterTest, anObservationMayBeMoved) {
  auto first = observeForAWhile("a", "first");
  NotificationObservation owner = std::move(first);
  post("a");
  owner = observeForAWhile("a", "second");
  post("a");
  EXPECT_THAT(heard_, ElementsAre("first", "second"));
}

TEST_F(NotificationCenterTest, aKeptObservationOutlivesItsOwner) {
  {
    auto first = observeForAWhile("a", "first");
    first.keep();
  }
  post("a");
  EXPECT_THAT(heard_, ElementsAre("first"));
}

TEST_F(NotificationCenterTest, anObservationMayOutliveItsCenter) {
  NotificationObservation observation;
  {
    NotificationCenter center;
    observation = center.addObserver("a", [](const Notification& /*each*/) {});
  }
  observation.end();
}

TEST_F(NotificationCenterTest, aHandlerMayEndTheCenter) {
  auto center = std::make_unique<NotificationCenter>();
  center->addObserver("a", [&](const Notification& /*each*/) { center = nullptr; }).keep();
  center->addObserver("a", [&](const Notification& /*each*/) { heard_.emplace_back("second"); })
      .keep();
  center->post(Notification("a", nullptr));
  EXPECT_EQ(center, nullptr);
  EXPECT_THAT(heard_, ElementsAre("second"));
}

TEST_F(NotificationCenterTest, aHandlerMayOwnOtherObservations) {
  NotificationObservation first;
  auto others = std::make_shared<std::vector<NotificationObservation>>();
  first = center_.addObserver("a", [&first, others](const Notification& /*each*/) { first.end(); });
  for (int i = 0; i < 3; ++i) {
    others->push_back(observeForAWhile("a", "other"));
  }
  const std::weak_ptr owned = others;
  others = nullptr;
  post("a");
  EXPECT_TRUE(owned.expired());
  EXPECT_EQ(center_.countObservers(), 0U);
}

TEST_F(NotificationCenterTest, aHandlerMayRemoveItselfAndLaterOnes) {
  NotificationObservation self;
  NotificationObservation later;
  self = center_.addObserver("a", [&](const Notification& /*each*/) {
    heard_.emplace_back("once");
    self.end();
    later.end();
  });
  later = observeForAWhile("a", "removed");
  observe("a", "kept");
  post("a");
  post("a");
  EXPECT_THAT(heard_, ElementsAre("once", "kept", "kept"));
}

TEST_F(NotificationCenterTest, aHandlerAddedMeanwhileHearsTheNextOne) {
  center_
      .addObserver("a",
                   [&](const Notification& /*each*/) {
                     for (int i = 0; i < 100; ++i) {
                       observe("a", "new");
                     }
                   })
      .keep();
  post("a");
  EXPECT_THAT(heard_, IsEmpty());
}

TEST_F(NotificationCenterTest, aHandlerMayPost) {
  center_
      .addObserver("a",
                   [&](const Notification& /*each*/) {
                     heard_.emplace_back("a");
                     post("b");
                   })
      .keep();
  observe("b", "b");
  observe("a", "a again");
  post("a");
  EXPECT_THAT(heard_, ElementsAre("a", "b", "a again"));
}

TEST_F(NotificationCenterTest, anObserverRemovedInANestedPostDisplacesNoneOfTheOuterOne) {
  auto earlier = observeForAWhile("a", "earlier");
  bool isNested = false;
  center_
      .addObserver("a",
                   [&](const Notification& /*each*/) {
                     if (!std::exchange(isNested, true)) {
                       earlier.end();
                       post("a");
                       heard_.emplace_back("nested post has ended");
                     }
                   })
      .keep();
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
  NotificationObservation self;
  self = center_.addObserver("a", [&](const Notification& /*each*/) {
    self.end();
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
