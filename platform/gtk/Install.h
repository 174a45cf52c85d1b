#pragma once

#include <memory>
#include <string>

#include "platform/UserDefaults.h"
#include "platform/View.h"

using GtkOverlay = struct _GtkOverlay;

namespace qorix::gtk {

/// What a host decides about the services that the library uses.
struct InstallOptions {
  /// The host's own reverse-DNS name, "com.example.editor". Required.
  std::string bundleIdentifier = {};

  /// The file of the host's settings; empty for the usual place in the user's configuration
  /// folder, one file a bundle identifier.
  std::string settingsPath = {};

  /// The host's settings when it keeps them itself; no settings file is then touched.
  std::shared_ptr<UserDefaults> settings = {};

  /// The folder whose items are the installed applications.
  std::string applicationsDirectory = "/usr/share/applications";

  /// Where the maker publishes the ad configuration document: for show requests that name no
  /// address. Empty keeps the library's own.
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
};

/// Puts the services of a GTK desktop in force for the whole process. Call it once, on the main
/// thread, after gtk_init and before anything else of the library. Never undone: a second call is
/// refused with one log line, since what waits for the first one's services would be lost.
void install(const InstallOptions& options);

/// The View of `overlay`, in which an advertisement may appear above the main child; the same one
/// at every call. The overlay owns it: it does no more when the overlay is destroyed, and weak
/// references to it end unless the host holds it itself. Null for null and for an overlay that is
/// being destroyed. Main thread only.
std::shared_ptr<View> viewForOverlay(GtkOverlay* overlay);

}  // namespace qorix::gtk
