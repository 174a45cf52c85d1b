#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace qorix::test {

/// Looks again and again until the condition holds; false when it does not in time. For what sends
/// no event to this process, such as the pixels of a screen or a file that another program writes:
/// a pause between two looks leaves the processor to those that are waited for.
inline bool waitUntil(const std::function<bool()>& condition, double seconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

}  // namespace qorix::test
