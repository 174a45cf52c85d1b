#include <utility>

#include <qorix/platform/Platform.h>

#include "platform/null/NullServices.h"

namespace qorix {

namespace {

Platform& installedPlatform() {
  // Never destroyed: the library's objects live until the process ends and may use it till then.
  static Platform& installed = *new Platform(nullPlatform());
  return installed;
}

template <class Service>
void fillIn(std::shared_ptr<Service>& service, const std::shared_ptr<Service>& fallback) {
  if (service == nullptr) {
    service = fallback;
  }
}

}  // namespace

Platform nullPlatform() {
  Platform null = nullServices();
  null.notificationCenter = std::make_shared<NotificationCenter>();
  return null;
}

void installPlatform(Platform services) {
  const Platform null = nullPlatform();
  fillIn(services.log, null.log);
  fillIn(services.standardUserDefaults, null.standardUserDefaults);
  fillIn(services.notificationCenter, null.notificationCenter);
  fillIn(services.mainRunLoop, null.mainRunLoop);
  fillIn(services.mainBundle, null.mainBundle);
  fillIn(services.libraryBundle, null.libraryBundle);
  fillIn(services.urlSessions, null.urlSessions);
  fillIn(services.applicationsFolder, null.applicationsFolder);
  fillIn(services.applicationRegistry, null.applicationRegistry);
  fillIn(services.workspace, null.workspace);
  fillIn(services.windows, null.windows);
  fillIn(services.interfaceLoader, null.interfaceLoader);
  fillIn(services.cloudContainers, null.cloudContainers);
  installedPlatform() = std::move(services);
}

const Platform& platform() { return installedPlatform(); }

}  // namespace qorix
