#include "fakes/FakeRunLoop.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <utility>

namespace qorix {

void FakeRunLoop::performAfterDelay(double seconds, std::function<void()> task) {
  delayed_.emplace(now_ + std::max(seconds, 0.0), std::move(task));
}

void FakeRunLoop::dispatchAsync(std::function<void()> task) {
  {
    const std::lock_guard lock(mutex_);
    queue_.push_back(std::move(task));
  }
  queued_.notify_all();
}

void FakeRunLoop::performAndWait(std::function<void()> task) {
  if (std::this_thread::get_id() == mainThread_) {
    task();
    return;
  }
  std::promise<void> done;
  // Like a delayed perform it waits while a menu is tracked; those belong to the main thread.
  dispatchAsync([&] {
    performAfterDelay(0, [&] {
      task();
      done.set_value();
    });
  });
  done.get_future().wait();
}

bool FakeRunLoop::runNextQueued() {
  std::function<void()> task;
  {
    const std::lock_guard lock(mutex_);
    if (runsQueued_ || queue_.empty()) {
      return false;
    }
    task = std::move(queue_.front());
    queue_.pop_front();
  }
  runsQueued_ = true;
  task();
  runsQueued_ = false;
  return true;
}

bool FakeRunLoop::runNextDue() {
  if (tracksMenu_ || delayed_.empty() || delayed_.begin()->first > now_) {
    return false;
  }
  const auto task = std::move(delayed_.begin()->second);
  delayed_.erase(delayed_.begin());
  task();
  return true;
}

void FakeRunLoop::runUntilIdle() {
  while (runNextQueued() || runNextDue()) {
  }
}

void FakeRunLoop::advance(double seconds) {
  const double end = now_ + seconds;
  runUntilIdle();
  while (!tracksMenu_ && !delayed_.empty() && delayed_.begin()->first <= end) {
    now_ = std::max(now_, delayed_.begin()->first);
    runUntilIdle();
  }
  now_ = end;
}

bool FakeRunLoop::waitForWork(double seconds) {
  {
    std::unique_lock lock(mutex_);
    if (!queued_.wait_for(lock, std::chrono::duration<double>(seconds),
                          [this] { return !queue_.empty(); })) {
      return false;
    }
  }
  runUntilIdle();
  return true;
}

std::vector<double> FakeRunLoop::pendingDelays() const {
  std::vector<double> delays;
  for (const auto& [due, task] : delayed_) {
    delays.push_back(due - now_);
  }
  return delays;
}

}  // namespace qorix
