#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "tools/preview/Options.h"

/// Passes the library's lines on and remembers them, so that it can be told why something is not
/// shown.
class RememberingLog : public qorix::Log {
 public:
  explicit RememberingLog(std::shared_ptr<qorix::Log> next);

  void write(std::string_view message) override;

  /// Whether lines are kept back, that is, not passed on.
  void setKeepsBack(bool keepsBack);

  /// The lines since the last call.
  std::vector<std::string> takeLines();

 private:
  std::mutex mutex_;
  std::shared_ptr<qorix::Log> next_;
  bool keepsBack_ = false;
  std::vector<std::string> lines_;
};

/// Puts the services of a host in force that has never shown an advertisement, forgets everything
/// when it ends, and runs for the user and on the machine that `options` describe. Call it once,
/// after gtk_init.
std::shared_ptr<RememberingLog> installServices(const Options& options);
