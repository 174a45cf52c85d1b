#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include <qorix/platform/RunLoop.h>

using GMainContext = struct _GMainContext;
using GSource = struct _GSource;

namespace qorix::gtk {

/// The run loop port on GLib's default main context, whoever iterates it: the host's main loop,
/// a modal dialog. What a task throws is logged and goes no further.
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
  void serveHost() override;

  /// Takes turns of the main context in which no task runs: what is waited for inside of a call
  /// lets nothing else of this library happen. What the host runs from such a turn, a modal dialog,
  /// has the tasks again. Main thread only.
  class HeldTurns {
   public:
    explicit HeldTurns(MainContextRunLoop& loop);
    ~HeldTurns();
    HeldTurns(const HeldTurns&) = delete;
    HeldTurns& operator=(const HeldTurns&) = delete;

    /// One turn, which waits that many milliseconds at most for something to do; false when there
    /// was nothing.
    bool take(int milliseconds);

   private:
    bool gather(GMainContext* context, int milliseconds);

    MainContextRunLoop& loop_;
    const int outerDepth_;
  };

 private:
  bool isHeld() const;
  void setSourcesHeld(bool areHeld);
  void performAt(std::int64_t time, std::function<void()> task);
  void runQueued();
  void runDue();
  void updateSources();

  const std::thread::id mainThread_;
  GSource* queueSource_;
  GSource* timeSource_;
  int heldDepth_ = 0;  // how deep in the main context's calls the held turns do theirs; 0: none

  std::mutex mutex_;  // guards what follows
  bool areSourcesHeld_ = false;
  std::deque<std::function<void()>> queue_;
  std::multimap<std::int64_t, std::function<void()>> performs_;  // by time due, in microseconds
};

}  // namespace qorix::gtk
