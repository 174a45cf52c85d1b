#pragma once

#include <glib.h>

#include <functional>
#include <utility>

namespace qorix::test {

/// Counts, as long as it lives, critical messages of every domain: those by which the C interface
/// refuses arguments, and any that GTK or GObject would add.
class CriticalMessages {
 public:
  CriticalMessages()
      : before_(g_log_set_default_handler(
            [](const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer count) {
              if ((level & G_LOG_LEVEL_CRITICAL) != 0) {
                ++*static_cast<int*>(count);
              } else {
                g_log_default_handler(domain, level, message, nullptr);
              }
            },
            &count_)) {}
  ~CriticalMessages() { g_log_set_default_handler(before_, nullptr); }
  CriticalMessages(const CriticalMessages&) = delete;
  CriticalMessages& operator=(const CriticalMessages&) = delete;

  /// How many there were during the call.
  int during(const std::function<void()>& call) {
    call();
    return std::exchange(count_, 0);
  }

 private:
  int count_ = 0;
  GLogFunc before_;
};

inline constexpr const char* kNoUtf8 = "caf\xE9";

}  // namespace qorix::test
