#pragma once

// Platform: values and ports.

#include <functional>

#include <qorix/Export.h>

namespace qorix {

/// The main thread's loop.
class QORIX_EXPORT RunLoop {
 public:
  virtual ~RunLoop() = default;

  /// Runs `task` once on the main thread, `seconds` or a little more from now and never inside this
  /// call, while the loop idles or runs a modal dialog; while the user tracks a menu it waits until
  /// the menu is gone. Equal delays keep their order. The task is kept alive until it has run; it
  /// cannot be cancelled. Main thread only.
  virtual void performAfterDelay(double seconds, std::function<void()> task) = 0;

  /// Runs `task` once on the main thread on a later pass of the loop, in the order of the calls and
  /// never inside this call, one at a time: while such a task runs a modal dialog, the next ones
  /// wait. Any thread.
  virtual void dispatchAsync(std::function<void()> task) = 0;

  /// Runs `task` on the main thread under the conditions of `performAfterDelay` and returns when it
  /// has run; on the main thread itself it runs at once. Also returns, without having run the task,
  /// when the process is ending. Any thread.
  virtual void performAndWait(std::function<void()> task) = 0;

  /// Handles the events of the host's own windows that wait, for a tenth of a second at most,
  /// inside a call that takes long; no task runs. Afterwards the host may have given up anything:
  /// hold what you use. Main thread only.
  virtual void serveHost() = 0;
};

}  // namespace qorix
