#pragma once

// For hosts.

#include <memory>
#include <string>
#include <vector>

#include <qorix/Export.h>
#include <qorix/MyPushAdManager.h>
#include <qorix/platform/Platform.h>
#include <qorix/platform/UserDefaults.h>
#include <qorix/platform/View.h>

using GtkOverlay = struct _GtkOverlay;

/// The library in a GTK application.
namespace qorix::gtk {

/// What a host decides about the services that the library uses.
struct InstallOptions {
  /// The host's own reverse-DNS name, "com.example.editor". Required.
  std::string bundleIdentifier = {};

  /// The file of the host's settings; empty for the usual place in the user's configuration
  /// folder, one file per bundle identifier.
  std::string settingsPath = {};

  /// The host's settings when it keeps them itself; no settings file is then touched.
  std::shared_ptr<UserDefaults> settings = {};

  /// The folder whose items are the installed applications.
  std::string applicationsDirectory = "/usr/share/applications";

  /// The URL of the ad configuration document, for show requests that name no address. Required
  /// for them: without it such a request logs and fetches nothing.
  std::string defaultAdFileUrl = {};

  /// The cloud container with the document, "iCloud." and a reverse-DNS name, likewise.
  std::string defaultCloudContainerIdentifier = {};

  /// Where cloud containers are reached: https, or http for a server of one's own. Empty keeps the
  /// public service.
  std::string cloudServiceAddress = {};

  /// "development" or "production"; empty is production.
  std::string cloudEnvironment = {};

  /// The container's API token. Without it no container can be made.
  std::string cloudApiToken = {};

  /// Whose documents are accepted: Ed25519 public keys, each 32 bytes in base64, as `qorix-sign
  /// keygen` prints them. Empty: everybody's. Several, so that a new key can be in use before the
  /// old one is given up. With keys, a document, fetched or cached, that none of them has signed is
  /// never read, kept or shown: it is a failed fetch, with one log line that says why. What is no
  /// key counts for nothing and is logged; with such ones alone every document is refused.
  std::vector<std::string> documentPublicKeys = {};
};

/// Starts the library in a GTK application: puts the desktop's services in force and tells the
/// one manager who the host is. Call it once, on the main thread, after gtk_init and before
/// anything else of the library.
///
/// Returns the manager, which lives until the process ends. Null only when the host has allocated
/// a manager of its own before, and without memory.
///
/// The long way is `install`, `MyPushAdManager::sharedPushAdManager` or `alloc` (with a subclass of
/// yours) and `configureWithAppBundle`.
inline std::shared_ptr<MyPushAdManager> start(const InstallOptions& options);

/// Puts the services of a GTK desktop in force for the whole process. Call it once, on the main
/// thread, after gtk_init and before anything else of the library. Never undone: a second call is
/// refused with one log line, since what waits for the first one's services would be lost. One that
/// found no memory has put nothing in force, and may be repeated. Without
/// a display, one line is logged; each request then logs that no window can be made, as well as
/// what it logs without a window anyway, and shows nothing.
QORIX_EXPORT void install(const InstallOptions& options);

/// The View of `overlay`, in which an advertisement may appear above the main child; the same one
/// at every call. The overlay owns it: it does no more when the overlay is destroyed, and weak
/// references to it end unless the host holds it itself. Null for null, for an overlay that is
/// being destroyed, and without memory. Main thread only.
QORIX_EXPORT std::shared_ptr<View> viewForOverlay(GtkOverlay* overlay);

inline std::shared_ptr<MyPushAdManager> start(const InstallOptions& options) {
  install(options);
  auto manager = MyPushAdManager::sharedPushAdManager();
  if (manager != nullptr) {
    manager->configureWithAppBundle(platform().mainBundle);
  }
  return manager;
}

}  // namespace qorix::gtk
