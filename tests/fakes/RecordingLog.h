#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <qorix/platform/Log.h>

namespace qorix {

/// Records the log lines.
class RecordingLog : public Log {
 public:
  void write(std::string_view message) override {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(message);
  }

  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

  /// Returns the lines since the last call.
  std::vector<std::string> takeLines() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace qorix
