#pragma once

#include <X11/Xlib.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <thread>
#include <utility>

namespace qorix::bench {

/// Watches the screen, on a thread and a connection of its own, until a colour is painted
/// somewhere.
class ScreenWatch {
 public:
  using Clock = std::chrono::steady_clock;

  /// Begins to watch. What is painted has to be at least 50 pixels high.
  explicit ScreenWatch(std::uint32_t color);
  ScreenWatch(const ScreenWatch&) = delete;
  ScreenWatch& operator=(const ScreenWatch&) = delete;
  ~ScreenWatch();

  /// Serves the main loop until the colour has been seen; the time of that. Ends the program with a
  /// message if that takes a minute.
  Clock::time_point waitForColor();

  /// Where it was seen.
  std::pair<int, int> place() const { return place_; }

 private:
  void watch();
  bool isOnScreen(Display* display);

  const std::uint32_t color_;
  std::atomic<bool> isSeen_ = false;
  std::atomic<bool> isToEnd_ = false;
  Clock::time_point seenAt_;  // set before isSeen_, as is the place
  std::pair<int, int> place_;
  std::thread thread_;
};

}  // namespace qorix::bench
