#pragma once

// Platform: values and ports.

#include <memory>
#include <string>
#include <vector>

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
  /// Where log lines go.
  std::shared_ptr<Log> log;
  /// The host's settings.
  std::shared_ptr<UserDefaults> standardUserDefaults;
  /// Where the library's notifications are posted.
  std::shared_ptr<NotificationCenter> notificationCenter;
  /// The main thread's loop.
  std::shared_ptr<RunLoop> mainRunLoop;
  /// The host application.
  std::shared_ptr<const Bundle> mainBundle;
  /// This library.
  std::shared_ptr<const Bundle> libraryBundle;
  /// Fetches the document from a web server.
  std::shared_ptr<UrlSessionFactory> urlSessions;
  /// Where promoted applications are looked for by name.
  std::shared_ptr<ApplicationsFolder> applicationsFolder;
  /// Where promoted applications are looked for by identifier.
  std::shared_ptr<ApplicationRegistry> applicationRegistry;
  /// Opens the addresses of links.
  std::shared_ptr<Workspace> workspace;
  /// Makes the pop-up window.
  std::shared_ptr<WindowFactory> windows;
  /// Makes the view of an advertisement.
  std::shared_ptr<InterfaceLoader> interfaceLoader;
  /// Fetches the document from a cloud record.
  std::shared_ptr<CloudContainerFactory> cloudContainers;

  /// @{
  /// Where the maker of the hosts publishes the ad configuration document, for show requests that
  /// name no address of their own: a URL, and the identifier of a cloud container ("iCloud." and a
  /// reverse-DNS name). Empty when there is none: such a request then logs and fetches nothing.
  std::string defaultAdFileUrl;
  std::string defaultCloudContainerIdentifier;
  /// @}

  /// The Ed25519 public keys, each 32 bytes in base64, of those who may publish documents. Empty:
  /// anybody may. Otherwise a document, fetched or cached, that none of them has signed is a failed
  /// fetch, with one log line that says why.
  std::vector<std::string> documentPublicKeys;
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
