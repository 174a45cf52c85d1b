#pragma once

#include <string>
#include <vector>

#include <qorix/platform/ApplicationRegistry.h>

namespace qorix {

/// The applications that have a desktop entry. An application's bundle identifier is the id of its
/// entry without ".desktop": that of "com.example.viewer.desktop" in a folder of applications, or
/// of "com/example.desktop" below it, with a dash for each slash of the path. The user's own folder
/// comes before the system's; an entry that is marked as hidden there counts as removed.
class DesktopEntryRegistry : public ApplicationRegistry {
 public:
  /// Looks below XDG_DATA_HOME, XDG_DATA_DIRS and where Flatpak exports entries, as they are at
  /// this moment. Returns the file URL of the entry, if there is one.
  std::vector<Url> applicationUrlsForBundleIdentifier(const std::string& identifier) override;
};

}  // namespace qorix
