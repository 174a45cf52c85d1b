#include "tools/preview/Services.h"

#include <utility>

#include <qorix/gtk3.h>
#include <qorix/platform/MemoryUserDefaults.h>
#include <qorix/platform/Platform.h>

#include "platform/linux/PreferredLanguages.h"
#include "tools/common/EmptyApplicationsFolder.h"
#include "tools/preview/Lines.h"

namespace qorix::tools::preview {

namespace {

class NoApplicationRegistry : public ApplicationRegistry {
 public:
  std::vector<Url> applicationUrlsForBundleIdentifier(const std::string& /*identifier*/) override {
    return {};
  }
};

// Prints what is opened, and passes it on if there is a desktop to pass it to.
class PrintingWorkspace : public Workspace {
 public:
  explicit PrintingWorkspace(std::shared_ptr<Workspace> desktop) : desktop_(std::move(desktop)) {}

  void openUrl(const Url& url) override {
    printLine("open", url.absoluteString() + (desktop_ ? "" : " (only printed: no --open)"));
    if (desktop_) {
      desktop_->openUrl(url);
    }
  }

 private:
  std::shared_ptr<Workspace> desktop_;
};

std::shared_ptr<UserDefaults> freshDefaults(const Options& options) {
  auto defaults = std::make_shared<MemoryUserDefaults>();
  if (!options.languages.empty()) {
    defaults->setStringArray(options.languages, kAppleLanguagesKey);
  } else if (const auto own = preferredLanguagesFromEnvironment()) {
    defaults->setStringArray(*own, kAppleLanguagesKey);
  }
  return defaults;
}

}  // namespace

RememberingLog::RememberingLog(std::shared_ptr<Log> next) : next_(std::move(next)) {}

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

RememberingRegistry::RememberingRegistry(std::shared_ptr<ApplicationRegistry> next)
    : next_(std::move(next)) {}

std::vector<Url> RememberingRegistry::applicationUrlsForBundleIdentifier(
    const std::string& identifier) {
  auto urls = next_->applicationUrlsForBundleIdentifier(identifier);
  lookups_.push_back({identifier, !urls.empty()});
  return urls;
}

std::vector<RememberingRegistry::Lookup> RememberingRegistry::takeLookups() {
  return std::exchange(lookups_, {});
}

Services installServices(const Options& options) {
  gtk::InstallOptions install;
  install.bundleIdentifier = options.app;
  install.settings = freshDefaults(options);
  install.applicationsDirectory = options.applications.value_or("");
  gtk::install(install);

  Platform services = platform();
  auto log = std::make_shared<RememberingLog>(services.log);
  services.log = log;
  services.workspace =
      std::make_shared<PrintingWorkspace>(options.open ? services.workspace : nullptr);
  if (!options.applications) {
    services.applicationsFolder = std::make_shared<EmptyApplicationsFolder>();
    services.applicationRegistry = std::make_shared<NoApplicationRegistry>();
  }
  auto registry = std::make_shared<RememberingRegistry>(services.applicationRegistry);
  services.applicationRegistry = registry;
  installPlatform(std::move(services));
  return {log, registry};
}

}  // namespace qorix::tools::preview
