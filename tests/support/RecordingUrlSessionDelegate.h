#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <qorix/platform/UrlSession.h>

namespace qorix {

/// Records the calls of a session, on any thread, and lets a test wait for them.
class RecordingUrlSessionDelegate : public UrlSessionDelegate {
 public:
  static constexpr auto kPatience = std::chrono::seconds(30);

  void urlSessionDidReceiveData(std::string_view data) override {
    if (onData) {
      onData();
    }
    const std::lock_guard lock(mutex_);
    body_ += data;
    ++pieces_;
    thread_ = std::this_thread::get_id();
    changed_.notify_all();
  }

  void urlSessionDidCompleteWithError(const std::optional<Error>& error) override {
    if (onCompletion) {
      onCompletion();
    }
    const std::lock_guard lock(mutex_);
    outcomes_.push_back(error);
    thread_ = std::this_thread::get_id();
    changed_.notify_all();
  }

  /// False when there are not `count` outcomes before the patience ends.
  bool waitForOutcomes(std::size_t count = 1) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kPatience, [&] { return outcomes_.size() >= count; });
  }

  bool waitForBodySize(std::size_t size) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kPatience, [&] { return body_.size() >= size; });
  }

  std::string body() const {
    const std::lock_guard lock(mutex_);
    return body_;
  }
  std::size_t pieces() const {
    const std::lock_guard lock(mutex_);
    return pieces_;
  }
  std::vector<std::optional<Error>> outcomes() const {
    const std::lock_guard lock(mutex_);
    return outcomes_;
  }
  /// The thread of the last call.
  std::thread::id thread() const {
    const std::lock_guard lock(mutex_);
    return thread_;
  }

  // Run at the beginning of each call; set them before the first task.
  std::function<void()> onData;
  std::function<void()> onCompletion;

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::string body_;
  std::size_t pieces_ = 0;
  std::vector<std::optional<Error>> outcomes_;
  std::thread::id thread_;
};

}  // namespace qorix
