#pragma once

#include <mutex>
#include <string>

#include <qorix/platform/Log.h>

namespace qorix {

/// The message with every hidden character escaped (\n, \t, \r, \x1B, \xE2\x80\xAE, ...), so that
/// it is one line of valid UTF-8, and looks like what it is, whatever it contains.
std::string escapedForLog(std::string_view message);

/// Writes each message as one line "YYYY-MM-DD HH:MM:SS.mmm name[pid] message" to standard error,
/// in local time. No message, whatever it quotes, can look like two lines.
class StandardErrorLog : public Log {
 public:
  void write(std::string_view message) override;

 private:
  std::mutex mutex_;  // keeps a line whole that the system writes in several pieces
};

}  // namespace qorix
