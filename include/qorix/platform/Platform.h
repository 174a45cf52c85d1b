#pragma once

// Platform: values and ports.

#include <memory>
#include <string>

#include <qorix/Export.h>
#include <qorix/platform/ApplicationRegistry.h>
#include <qorix/platform/ApplicationsFolder.h>
#include <qorix/platform/Bundle.h>
#include <qorix/platform/CloudContainer.h>
#include <qorix/platform/InterfaceLoader.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/NotificationCenter.h>
#include <qorix/platform/RunLoop.h>
#include <qorix/platform/UrlSession.h>
#include <qorix/platform/UserDefaults.h>
#include <qorix/platform/Window.h>
#include <qorix/platform/Workspace.h>

namespace qorix {

/// The services of the machine that the library runs on, one of each. No member is ever null.
struct Platform {
  std::shared_ptr<Log> log;
  std::shared_ptr<UserDefaults> standardUserDefaults;
  std::shared_ptr<NotificationCenter> notificationCenter;
  std::shared_ptr<RunLoop> mainRunLoop;
  /// The host application.
  std::shared_ptr<const Bundle> mainBundle;
  /// This library.
  std::shared_ptr<const Bundle> libraryBundle;
  std::shared_ptr<UrlSessionFactory> urlSessions;
  std::shared_ptr<ApplicationsFolder> applicationsFolder;
  std::shared_ptr<ApplicationRegistry> applicationRegistry;
  std::shared_ptr<Workspace> workspace;
  std::shared_ptr<WindowFactory> windows;
  std::shared_ptr<InterfaceLoader> interfaceLoader;
  std::shared_ptr<CloudContainerFactory> cloudContainers;

  /// Where the maker of the hosts publishes the ad configuration document, for show requests that
  /// name no address of their own: a URL, and the identifier of a cloud container ("iCloud." and a
  /// reverse-DNS name). Empty when there is none: such a request then logs and fetches nothing.
  std::string defaultAdFileUrl;
  std::string defaultCloudContainerIdentifier;
};

/// A platform whose every service does nothing, but for a log on standard error, settings that last
/// as long as the process, and notifications. Its run loop has no thread of its own: what is
/// awaited runs at once, what is deferred never. For members that a platform lacks, and in force
/// until one is installed.
QORIX_EXPORT Platform nullPlatform();

/// Puts `services` in force for the whole process. Call it on the main thread before anything else
/// of the library; members left null are taken from `nullPlatform`. Never undone.
QORIX_EXPORT void installPlatform(Platform services);

/// The services in force. Any thread, once installed.
QORIX_EXPORT const Platform& platform();

}  // namespace qorix
