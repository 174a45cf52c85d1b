#include "tools/preview/Services.h"

#include <utility>

#include <qorix/gtk3.h>
#include <qorix/platform/MemoryUserDefaults.h>
#include <qorix/platform/Platform.h>

#include "platform/linux/PreferredLanguages.h"
#include "tools/adcheck/EmptyApplicationsFolder.h"
#include "tools/preview/Lines.h"

namespace {

class NoApplicationRegistry : public qorix::ApplicationRegistry {
 public:
  std::vector<qorix::Url> applicationUrlsForBundleIdentifier(
      const std::string& /*identifier*/) override {
    return {};
  }
};

// Says what is opened, and hands it on when there is a desktop to hand it to.
class TellingWorkspace : public qorix::Workspace {
 public:
  explicit TellingWorkspace(std::shared_ptr<qorix::Workspace> desktop)
      : desktop_(std::move(desktop)) {}

  void openUrl(const qorix::Url& url) override {
    printLine("open", url.absoluteString() + (desktop_ ? "" : " (only told: no --open)"));
    if (desktop_) {
      desktop_->openUrl(url);
    }
  }

 private:
  std::shared_ptr<qorix::Workspace> desktop_;
};

std::shared_ptr<qorix::UserDefaults> freshDefaults(const Options& options) {
  auto defaults = std::make_shared<qorix::MemoryUserDefaults>();
  if (!options.languages.empty()) {
    defaults->setStringArray(options.languages, qorix::kAppleLanguagesKey);
  } else if (const auto own = qorix::preferredLanguagesFromEnvironment()) {
    defaults->setStringArray(*own, qorix::kAppleLanguagesKey);
  }
  return defaults;
}

}  // namespace

RememberingLog::RememberingLog(std::shared_ptr<qorix::Log> next) : next_(std::move(next)) {}

void RememberingLog::write(std::string_view message) {
  const std::lock_guard lock(mutex_);
  lines_.emplace_back(message);
  if (!keepsBack_) {
    next_->write(message);
  }
}

void RememberingLog::setKeepsBack(bool keepsBack) {
  const std::lock_guard lock(mutex_);
  keepsBack_ = keepsBack;
}

std::vector<std::string> RememberingLog::takeLines() {
  const std::lock_guard lock(mutex_);
  return std::exchange(lines_, {});
}

RememberingRegistry::RememberingRegistry(std::shared_ptr<qorix::ApplicationRegistry> next)
    : next_(std::move(next)) {}

std::vector<qorix::Url> RememberingRegistry::applicationUrlsForBundleIdentifier(
    const std::string& identifier) {
  auto urls = next_->applicationUrlsForBundleIdentifier(identifier);
  lookups_.push_back({identifier, !urls.empty()});
  return urls;
}

std::vector<RememberingRegistry::Lookup> RememberingRegistry::takeLookups() {
  return std::exchange(lookups_, {});
}

Services installServices(const Options& options) {
  qorix::gtk::InstallOptions install;
  install.bundleIdentifier = options.app;
  install.settings = freshDefaults(options);
  install.applicationsDirectory = options.applications.value_or("");
  qorix::gtk::install(install);

  qorix::Platform services = qorix::platform();
  auto log = std::make_shared<RememberingLog>(services.log);
  services.log = log;
  services.workspace =
      std::make_shared<TellingWorkspace>(options.open ? services.workspace : nullptr);
  if (!options.applications) {
    services.applicationsFolder = std::make_shared<qorix::adcheck::EmptyApplicationsFolder>();
    services.applicationRegistry = std::make_shared<NoApplicationRegistry>();
  }
  auto registry = std::make_shared<RememberingRegistry>(services.applicationRegistry);
  services.applicationRegistry = registry;
  qorix::installPlatform(std::move(services));
  return {log, registry};
}
