#include "platform/gtk/MainContextRunLoop.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <utility>

namespace qorix::gtk {

namespace {

constexpr std::int64_t kMenuCheckInterval = 15'000;  // microseconds

bool isMenuTracked() {
  GtkWidget* grab = gtk_grab_get_current();
  return grab != nullptr && (GTK_IS_MENU_SHELL(grab) || GTK_IS_POPOVER_MENU(grab));
}

std::int64_t timeAfter(double seconds) {
  constexpr double kLongest = 1e17;  // three thousand years, far from any overflow
  const double microseconds = std::ceil(seconds * 1e6);
  // Written so that a NaN is no delay.
  const double delay = microseconds > 0 ? std::min(microseconds, kLongest) : 0;
  return g_get_monotonic_time() + static_cast<std::int64_t>(delay);
}

// Those who wait for the main thread must not wait for one that has left its loop for good. Never
// destroyed: they may look at it till the very end.
struct ProcessEnd {
  std::mutex mutex;
  std::condition_variable changed;
  bool hasBegun = false;
};

ProcessEnd& processEnd() {
  static ProcessEnd& end = *new ProcessEnd;
  return end;
}

void beginProcessEnd() {
  const std::lock_guard lock(processEnd().mutex);
  processEnd().hasBegun = true;
  processEnd().changed.notify_all();
}

// What a waiting thread shares with the task that it waits for.
struct Wait {
  std::function<void()> task;  // taken by whoever comes first, the run or the end
  bool isDone = false;
};

void runAwaitedTask(Wait& wait) {
  std::function<void()> task;
  {
    const std::lock_guard lock(processEnd().mutex);
    task = std::exchange(wait.task, nullptr);
  }
  if (task == nullptr) {
    return;
  }
  task();
  task = nullptr;  // what it holds is released before its owner goes on
  const std::lock_guard lock(processEnd().mutex);
  wait.isDone = true;
  processEnd().changed.notify_all();
}

// A source without conditions of its own: it is ready at the time that it has been given.
GSource* newTimedSource(GSourceFunc run, MainContextRunLoop* loop) {
  static GSourceFuncs functions = {
      nullptr,
      nullptr,
      [](GSource*, GSourceFunc callback, gpointer data) { return callback(data); },
      nullptr,
      nullptr,
      nullptr,
  };
  GSource* source = g_source_new(&functions, sizeof(GSource));
  g_source_set_callback(source, run, loop, nullptr);
  // A task may run a modal dialog, in which the others go on.
  g_source_set_can_recurse(source, TRUE);
  g_source_set_static_name(source, "qorix");
  g_source_attach(source, nullptr);
  return source;
}

void destroySource(GSource* source) {
  g_source_destroy(source);
  g_source_unref(source);
}

}  // namespace

MainContextRunLoop::MainContextRunLoop() : mainThread_(std::this_thread::get_id()) {
  static const bool isRegistered = [] {
    processEnd();
    return std::atexit(beginProcessEnd) == 0;
  }();
  static_cast<void>(isRegistered);
  queueSource_ = newTimedSource(
      [](gpointer loop) -> gboolean {
        static_cast<MainContextRunLoop*>(loop)->runQueued();
        return G_SOURCE_CONTINUE;
      },
      this);
  timeSource_ = newTimedSource(
      [](gpointer loop) -> gboolean {
        static_cast<MainContextRunLoop*>(loop)->runDue();
        return G_SOURCE_CONTINUE;
      },
      this);
}

MainContextRunLoop::~MainContextRunLoop() {
  destroySource(queueSource_);
  destroySource(timeSource_);
}

void MainContextRunLoop::performAfterDelay(double seconds, std::function<void()> task) {
  performAt(timeAfter(seconds), std::move(task));
}

void MainContextRunLoop::dispatchAsync(std::function<void()> task) {
  const std::lock_guard lock(mutex_);
  queue_.push_back(std::move(task));
  updateSources();
}

void MainContextRunLoop::performAndWait(std::function<void()> task) {
  if (std::this_thread::get_id() == mainThread_) {
    task();
    return;
  }
  const auto wait = std::make_shared<Wait>(Wait{std::move(task)});
  performAt(timeAfter(0), [wait] { runAwaitedTask(*wait); });
  std::unique_lock lock(processEnd().mutex);
  processEnd().changed.wait(lock, [&] { return wait->isDone || processEnd().hasBegun; });
  wait->task = nullptr;  // it may refer to what the caller is about to destroy
}

void MainContextRunLoop::performAt(std::int64_t time, std::function<void()> task) {
  const std::lock_guard lock(mutex_);
  performs_.emplace(time, std::move(task));
  updateSources();
}

// One task at a time: between two the loop serves the host, too.
void MainContextRunLoop::runQueued() {
  std::function<void()> task;
  {
    const std::lock_guard lock(mutex_);
    if (holds_ > 0 || queue_.empty()) {
      return;
    }
    task = std::move(queue_.front());
    queue_.pop_front();
    updateSources();
  }
  task();
}

void MainContextRunLoop::runDue() {
  std::function<void()> task;
  {
    const std::lock_guard lock(mutex_);
    const std::int64_t now = g_get_monotonic_time();
    if (holds_ > 0 || performs_.empty() || performs_.begin()->first > now) {
      return;
    }
    if (isMenuTracked()) {
      g_source_set_ready_time(timeSource_, now + kMenuCheckInterval);
      return;
    }
    task = std::move(performs_.begin()->second);
    performs_.erase(performs_.begin());
    updateSources();
  }
  task();
}

// With the mutex held. A source that must not run is not ready, so that the loop sleeps.
void MainContextRunLoop::updateSources() {
  const bool isHeld = holds_ > 0;
  g_source_set_ready_time(queueSource_, isHeld || queue_.empty() ? -1 : 0);
  g_source_set_ready_time(timeSource_, isHeld || performs_.empty() ? -1 : performs_.begin()->first);
}

void MainContextRunLoop::addHolds(int count) {
  const std::lock_guard lock(mutex_);
  holds_ += count;
  updateSources();
}

MainContextRunLoop::Hold::Hold(MainContextRunLoop& loop) : loop_(loop) { loop_.addHolds(1); }

MainContextRunLoop::Hold::~Hold() { loop_.addHolds(-1); }

}  // namespace qorix::gtk
