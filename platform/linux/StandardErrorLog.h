#pragma once

#include <mutex>
#include <string>

#include <qorix/platform/Log.h>

namespace qorix {

/// The message with every control character written out (\n, \t, \r, \x1B, ...), so that it is one
/// line whatever is in it.
std::string escapedForLog(std::string_view message);

/// Writes each message as one line "YYYY-MM-DD HH:MM:SS.mmm name[pid] message" to standard error,
/// in local time. Whatever text a message quotes, it cannot look like a second line.
class StandardErrorLog : public Log {
 public:
  void write(std::string_view message) override;

 private:
  std::mutex mutex_;  // keeps a line whole that the system takes in several pieces
};

}  // namespace qorix
