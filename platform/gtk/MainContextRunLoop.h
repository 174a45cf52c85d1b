#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/RunLoop.h"

using GSource = struct _GSource;

namespace qorix::gtk {

/// The run loop port on GLib's default main context, whoever iterates it: the host's main loop,
/// a modal dialog.
class MainContextRunLoop : public RunLoop {
 public:
  /// Made on the main thread, and destroyed there (tasks that have not run are dropped).
  MainContextRunLoop();
  ~MainContextRunLoop() override;
  MainContextRunLoop(const MainContextRunLoop&) = delete;
  MainContextRunLoop& operator=(const MainContextRunLoop&) = delete;

  void performAfterDelay(double seconds, std::function<void()> task) override;
  void dispatchAsync(std::function<void()> task) override;
  void performAndWait(std::function<void()> task) override;

  /// While one exists no task runs, though the main context may be iterated. Main thread only.
  class Hold {
   public:
    explicit Hold(MainContextRunLoop& loop);
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    MainContextRunLoop& loop_;
  };

 private:
  void addHolds(int count);
  void performAt(std::int64_t time, std::function<void()> task);
  void runQueued();
  void runDue();
  void updateSources();

  const std::thread::id mainThread_;
  GSource* queueSource_;
  GSource* timeSource_;

  std::mutex mutex_;  // guards what follows
  int holds_ = 0;
  std::deque<std::function<void()>> queue_;
  std::multimap<std::int64_t, std::function<void()>> performs_;  // by time due, in microseconds
};

}  // namespace qorix::gtk
