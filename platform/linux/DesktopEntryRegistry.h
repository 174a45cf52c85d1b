#pragma once

#include <string>
#include <vector>

#include <qorix/platform/ApplicationRegistry.h>

namespace qorix {

/// The applications that have a desktop entry. An application's bundle identifier is the id of its
/// entry without ".desktop": "com.example.viewer.desktop" in a folder of applications, or
/// "com/example.desktop" below it for an id in which dashes stand for the slashes. The user's own
/// folder comes before the system's; an entry that is marked as hidden there counts as removed.
class DesktopEntryRegistry : public ApplicationRegistry {
 public:
  /// Looks below XDG_DATA_HOME, XDG_DATA_DIRS and where Flatpak exports entries, as they are set at
  /// each look-up. The answer holds the file URL of the entry.
  std::vector<Url> applicationUrlsForBundleIdentifier(const std::string& identifier) override;
};

}  // namespace qorix
