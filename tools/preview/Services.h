#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <qorix/platform/ApplicationRegistry.h>
#include <qorix/platform/Log.h>

#include "tools/preview/Options.h"

/// Passes the library's lines on and remembers them, so that it can be told why a document is
/// refused.
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

/// Passes the library's questions on and remembers them with their answers, so that it can be told
/// what a page was told. Main thread only.
class RememberingRegistry : public qorix::ApplicationRegistry {
 public:
  struct Lookup {
    std::string identifier;
    bool isInstalled = false;
  };

  explicit RememberingRegistry(std::shared_ptr<qorix::ApplicationRegistry> next);

  std::vector<qorix::Url> applicationUrlsForBundleIdentifier(
      const std::string& identifier) override;

  /// What was looked up since the last call, in that order.
  std::vector<Lookup> takeLookups();

 private:
  std::shared_ptr<qorix::ApplicationRegistry> next_;
  std::vector<Lookup> lookups_;
};

/// The services that tell what the library does with them.
struct Services {
  std::shared_ptr<RememberingLog> log;
  std::shared_ptr<RememberingRegistry> registry;
};

/// Puts the services of a host in force that has never shown an advertisement, forgets everything
/// when it ends, and runs for the user and on the machine that `options` describe. Call it once,
/// after gtk_init.
Services installServices(const Options& options);
