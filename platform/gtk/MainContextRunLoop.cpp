#include "platform/gtk/MainContextRunLoop.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <utility>
#include <vector>

#include "platform/Guarded.h"
#include "platform/gtk/MenuTracking.h"

namespace qorix::gtk {

namespace {

constexpr std::int64_t kMenuCheckInterval = 15'000;  // microseconds

std::int64_t timeAfter(double seconds) {
  constexpr double kLongest = 1e17;  // three thousand years, far from any overflow
  const double microseconds = std::ceil(seconds * 1e6);
  // Written so that a NaN gives no delay.
  const double delay = microseconds > 0 ? std::min(microseconds, kLongest) : 0;
  return g_get_monotonic_time() + static_cast<std::int64_t>(delay);
}

// Threads that wait for the main thread must not wait after it has left its loop for good. Never
// destroyed: they may look at it until the very end.
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
  std::function<void()> task;  // taken by the loop, or dropped by the waiting thread
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
  callGuarded(task);
  task = nullptr;  // what it holds is released before the waiting thread goes on
  const std::lock_guard lock(processEnd().mutex);
  wait.isDone = true;
  processEnd().changed.notify_all();
}

// A source that is ready at the time that was set. If it does not recurse, its other tasks wait
// while one of them runs a modal dialog.
GSource* newTimedSource(GSourceFunc run, MainContextRunLoop* loop, bool recurses) {
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
  g_source_set_can_recurse(source, recurses ? TRUE : FALSE);
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
      this, false);
  timeSource_ = newTimedSource(
      [](gpointer loop) -> gboolean {
        static_cast<MainContextRunLoop*>(loop)->runDue();
        return G_SOURCE_CONTINUE;
      },
      this, true);
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
  wait->task = nullptr;  // it may refer to what the caller destroys next
}

void MainContextRunLoop::performAt(std::int64_t time, std::function<void()> task) {
  const std::lock_guard lock(mutex_);
  performs_.emplace(time, std::move(task));
  updateSources();
}

// One task at a time: between two the loop also serves the host.
void MainContextRunLoop::runQueued() {
  std::function<void()> task;
  {
    const std::lock_guard lock(mutex_);
    if (isHeld() || queue_.empty()) {
      return;
    }
    task = std::move(queue_.front());
    queue_.pop_front();
    updateSources();
  }
  callGuarded(task);
}

void MainContextRunLoop::runDue() {
  std::function<void()> task;
  {
    const std::lock_guard lock(mutex_);
    const std::int64_t now = g_get_monotonic_time();
    if (isHeld() || performs_.empty() || performs_.begin()->first > now) {
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
  callGuarded(task);
}

// The caller holds the mutex. A source that must not run is not ready, so that the loop sleeps.
void MainContextRunLoop::updateSources() {
  g_source_set_ready_time(queueSource_, areSourcesHeld_ || queue_.empty() ? -1 : 0);
  g_source_set_ready_time(timeSource_,
                          areSourcesHeld_ || performs_.empty() ? -1 : performs_.begin()->first);
}

// Needed for a source that was ready before the held turns began: the first of them calls it.
bool MainContextRunLoop::isHeld() const { return heldDepth_ > 0 && g_main_depth() == heldDepth_; }

void MainContextRunLoop::setSourcesHeld(bool areHeld) {
  const std::lock_guard lock(mutex_);
  areSourcesHeld_ = areHeld;
  updateSources();
}

void MainContextRunLoop::serveHost() {
  constexpr std::int64_t kLongest = 100'000;  // microseconds; the host may have work without end
  HeldTurns turns(*this);
  const std::int64_t end = g_get_monotonic_time() + kLongest;
  while (turns.take(0) && g_get_monotonic_time() < end) {
  }
}

MainContextRunLoop::HeldTurns::HeldTurns(MainContextRunLoop& loop)
    : loop_(loop), outerDepth_(std::exchange(loop.heldDepth_, g_main_depth() + 1)) {}

MainContextRunLoop::HeldTurns::~HeldTurns() { loop_.heldDepth_ = outerDepth_; }

bool MainContextRunLoop::HeldTurns::take(int milliseconds) {
  GMainContext* context = g_main_context_default();
  if (g_main_context_acquire(context) == FALSE) {
    return false;
  }
  const bool isReady = gather(context, milliseconds);
  g_main_context_dispatch(context);
  g_main_context_release(context);
  return isReady;
}

// Finds out which sources are ready, as an ordinary turn does. Those of the tasks are held back.
bool MainContextRunLoop::HeldTurns::gather(GMainContext* context, int milliseconds) {
  loop_.setSourcesHeld(true);
  int priority = 0;
  g_main_context_prepare(context, &priority);
  std::vector<GPollFD> descriptors(16);
  int timeout = 0;
  int count = 0;
  for (;;) {
    const int size = static_cast<int>(descriptors.size());
    count = g_main_context_query(context, priority, &timeout, descriptors.data(), size);
    if (count <= size) {
      break;
    }
    descriptors.resize(static_cast<std::size_t>(count));
  }
  const int wait = timeout < 0 ? milliseconds : std::min(timeout, milliseconds);
  g_main_context_get_poll_func(context)(descriptors.data(), static_cast<guint>(count), wait);
  const bool isReady = g_main_context_check(context, priority, descriptors.data(), count) != FALSE;
  loop_.setSourcesHeld(false);
  return isReady;
}

}  // namespace qorix::gtk
