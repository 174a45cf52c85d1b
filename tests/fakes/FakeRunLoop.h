#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include <qorix/platform/RunLoop.h>

namespace qorix {

/// A run loop with a virtual clock. It runs only when a test says so. The thread that constructs it
/// is the main thread.
class FakeRunLoop : public RunLoop {
 public:
  void performAfterDelay(double seconds, std::function<void()> task) override;
  void dispatchAsync(std::function<void()> task) override;
  void performAndWait(std::function<void()> task) override;
  void serveHost() override { ++timesHostWasServed; }

  /// Runs what is queued or due, and what these tasks add, until nothing is left to do now.
  void runUntilIdle();

  /// Advances the clock and runs what becomes due, in the order of the due times.
  void advance(double seconds);

  /// Waits, by the real clock, until another thread has queued a task or `seconds` have passed,
  /// then runs until idle. Returns true if there was a task.
  bool waitForWork(double seconds);

  /// While a menu is tracked, delayed tasks wait.
  void setTracksMenu(bool tracks) { tracksMenu_ = tracks; }

  /// The seconds until each delayed task is due, soonest first.
  std::vector<double> pendingDelays() const;

  int timesHostWasServed = 0;

 private:
  bool runNextQueued();
  bool runNextDue();

  const std::thread::id mainThread_ = std::this_thread::get_id();
  double now_ = 0;
  bool tracksMenu_ = false;
  bool runsQueued_ = false;
  std::multimap<double, std::function<void()>> delayed_;  // by due time, then in call order
  std::mutex mutex_;                                      // guards queue_
  std::condition_variable queued_;
  std::deque<std::function<void()>> queue_;
};

}  // namespace qorix
