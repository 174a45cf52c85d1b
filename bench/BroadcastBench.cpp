// What many presenters cost: a frame change that goes to each of them beside as many empty calls,
// and the making of one more beside that of the tenth.

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <qorix/MyPushAdOperator.h>

#include "fakes/FakePlatform.h"
#include "support/Measuring.h"
#include "support/Records.h"

namespace qorix::bench {
namespace {

/// Presenters, each with a host view of its own, that a broadcast reaches.
class Presenters {
 public:
  Presenters() { installPlatform(fakes_.services()); }

  void add() {
    hostViews_.push_back(std::make_shared<FakeView>());
    presenters_.push_back(MyPushAdOperator::createInstanceWithHostView<MyPushAdOperator>(
        std::shared_ptr<View>(hostViews_.back())));
  }

  void addUpTo(std::size_t count) {
    while (presenters_.size() < count) {
      add();
      presenters_.back()->processShowAdIfNeededWithPushAdInfo(makeRecord({.version = ""}));
    }
    fakes_.runLoop->runUntilIdle();
  }

  void broadcast() {
    fakes_.notificationCenter->post({kViewFrameDidChangeNotification, hostViews_.front()});
  }

  void removeLast() {
    presenters_.pop_back();
    hostViews_.pop_back();
  }

 private:
  FakePlatform fakes_;
  std::vector<std::shared_ptr<FakeView>> hostViews_;
  std::vector<std::shared_ptr<MyPushAdOperator>> presenters_;
};

void compare() {
  constexpr std::size_t kCounts[] = {10, 1'000, 10'000};
  Presenters presenters;
  std::vector<double> makings;
  printHeading("A frame change, told to every presenter", "ns a receiver");
  for (const std::size_t count : kCounts) {
    presenters.addUpTo(count);
    std::size_t called = 0;
    const std::vector<std::function<void(const Notification&)>> calls(
        count, [&called](const Notification& /*each*/) { ++called; });
    const Notification notification(kViewFrameDidChangeNotification, nullptr);
    const auto times = inTurns(
        rounds(static_cast<int>(std::max<std::size_t>(300, 200'000 / count))),
        {[&] { presenters.broadcast(); },
         [&] { std::ranges::for_each(calls, [&](const auto& call) { call(notification); }); }});
    const double nanoseconds = 1000.0 / static_cast<double>(count);
    printRow({std::to_string(count) + " presenters", times[0] * nanoseconds, "empty calls",
              times[1] * nanoseconds});
    std::vector<double> each;
    for (int round = 0; round < rounds(301); ++round) {
      each.push_back(microsecondsOf([&] { presenters.add(); }));
      presenters.removeLast();
    }
    makings.push_back(medianOf(each));
  }
  printHeading("Making one more presenter", "us");
  for (std::size_t index = 1; index < std::size(kCounts); ++index) {
    printRow({"beside " + std::to_string(kCounts[index]), makings[index],
              "beside " + std::to_string(kCounts[0]), makings[0], 1.1});
  }
}

}  // namespace
}  // namespace qorix::bench

int main() { return qorix::bench::report(qorix::bench::compare); }
