#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

#include <qorix/platform/RunLoop.h>

using GMainContext = struct _GMainContext;
using GSource = struct _GSource;

namespace qorix::gtk {

/// The run loop port on GLib's default main context, whether the host's main loop or a modal dialog
/// runs it. What a task throws is logged and stopped.
class MainContextRunLoop : public RunLoop {
 public:
  /// To be made and destroyed on the main thread. Tasks that have not run by then are dropped.
  MainContextRunLoop();
  ~MainContextRunLoop() override;
  MainContextRunLoop(const MainContextRunLoop&) = delete;
  MainContextRunLoop& operator=(const MainContextRunLoop&) = delete;

  void performAfterDelay(double seconds, std::function<void()> task) override;
  void dispatchAsync(std::function<void()> task) override;
  void performAndWait(std::function<void()> task) override;
  void serveHost() override;

  /// Runs the main context, turn by turn, without any task: while a call waits for something,
  /// nothing else of this library happens. In what the host runs from such a turn, a modal dialog,
  /// say, tasks run again. Main thread only.
  class HeldTurns {
   public:
    explicit HeldTurns(MainContextRunLoop& loop);
    ~HeldTurns();
    HeldTurns(const HeldTurns&) = delete;
    HeldTurns& operator=(const HeldTurns&) = delete;

    /// Takes one turn, which waits at most that many milliseconds for something to do. Returns
    /// false if there was nothing to do.
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
  int heldDepth_ = 0;  // the depth of the main context at which the held turns call; 0: none

  std::mutex mutex_;  // guards the members below
  bool areSourcesHeld_ = false;
  std::deque<std::function<void()>> queue_;
  std::multimap<std::int64_t, std::function<void()>> performs_;  // by time due, in microseconds
};

}  // namespace qorix::gtk
