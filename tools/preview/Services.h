#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <qorix/platform/ApplicationRegistry.h>
#include <qorix/platform/Log.h>

#include "tools/preview/Options.h"

namespace qorix::tools::preview {

/// Passes the library's log lines on and keeps them, to report why a document is refused.
class RememberingLog : public Log {
 public:
  explicit RememberingLog(std::shared_ptr<Log> next);

  void write(std::string_view message) override;

  /// Whether lines are kept back, that is, not passed on.
  void setKeepsBack(bool keepsBack);

  /// The lines since the last call.
  std::vector<std::string> takeLines();

 private:
  std::mutex mutex_;
  std::shared_ptr<Log> next_;
  bool keepsBack_ = false;
  std::vector<std::string> lines_;
};

/// Passes the library's look-ups on and keeps their results, to report what a page receives. Main
/// thread only.
class RememberingRegistry : public ApplicationRegistry {
 public:
  struct Lookup {
    std::string identifier;
    bool isInstalled = false;
  };

  explicit RememberingRegistry(std::shared_ptr<ApplicationRegistry> next);

  std::vector<Url> applicationUrlsForBundleIdentifier(const std::string& identifier) override;

  /// What was looked up since the last call, in that order.
  std::vector<Lookup> takeLookups();

 private:
  std::shared_ptr<ApplicationRegistry> next_;
  std::vector<Lookup> lookups_;
};

/// The services that report what the library does with them.
struct Services {
  std::shared_ptr<RememberingLog> log;
  std::shared_ptr<RememberingRegistry> registry;
};

/// Installs the services of a host that has never shown an advertisement and stores nothing, for
/// the user and the machine that `options` describe. Call it once, after gtk_init.
Services installServices(const Options& options);

}  // namespace qorix::tools::preview
