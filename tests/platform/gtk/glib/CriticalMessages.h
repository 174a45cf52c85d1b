#pragma once

#include <glib.h>

#include <functional>
#include <utility>

namespace qorix::test {

/// Counts, as long as it lives, the critical messages by which the C interface refuses arguments.
class CriticalMessages {
 public:
  CriticalMessages()
      : handler_(g_log_set_handler(
            "Qorix", G_LOG_LEVEL_CRITICAL,
            [](const gchar* /*domain*/, GLogLevelFlags /*level*/, const gchar* /*message*/,
               gpointer count) { ++*static_cast<int*>(count); },
            &count_)) {}
  ~CriticalMessages() { g_log_remove_handler("Qorix", handler_); }
  CriticalMessages(const CriticalMessages&) = delete;
  CriticalMessages& operator=(const CriticalMessages&) = delete;

  /// How many there were during the call.
  int during(const std::function<void()>& call) {
    call();
    return std::exchange(count_, 0);
  }

 private:
  int count_ = 0;
  guint handler_;
};

inline constexpr const char* kNoUtf8 = "caf\xE9";

}  // namespace qorix::test
