#include "platform/linux/DesktopEntryRegistry.h"

#include <glib.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>

#include "platform/linux/UserFolders.h"

namespace qorix {

namespace {

namespace fs = std::filesystem;

// GLib's g_desktop_app_info_new finds entries, too. It keeps the folders of the first look-up,
// misses what has been added or removed since, and leaves out an entry whose program is not there.

std::string environment(const char* name, const std::string& fallback) {
  const char* value = g_getenv(name);
  return value == nullptr || *value == '\0' ? fallback : value;
}

/// The folders that hold "applications" folders, most important first. The environment usually
/// names Flatpak's, but not in every session.
std::vector<fs::path> dataFolders() {
  const fs::path home = userDataFolder();
  std::vector<fs::path> folders{home};
  std::istringstream systemFolders(environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share"));
  for (std::string folder; std::getline(systemFolders, folder, ':');) {
    if (folder.starts_with('/')) {
      folders.emplace_back(folder);
    }
  }
  folders.push_back(home / "flatpak/exports/share");
  folders.emplace_back("/var/lib/flatpak/exports/share");
  return folders;
}

/// The entry with that id in `folder`; each dash of the id may stand for a slash. None leads out of
/// the folder.
std::optional<fs::path> findEntry(const fs::path& folder, const std::string& id) {
  std::error_code error;
  if (const fs::path entry = folder / id; fs::is_regular_file(entry, error)) {
    return entry;
  }
  for (auto dash = id.find('-'); dash != std::string::npos; dash = id.find('-', dash + 1)) {
    const std::string name = id.substr(0, dash);
    if (!name.empty() && name != "." && name != ".." && fs::is_directory(folder / name, error)) {
      if (auto entry = findEntry(folder / name, id.substr(dash + 1))) {
        return entry;
      }
    }
  }
  return std::nullopt;
}

bool isApplication(const fs::path& entry) {
  const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(),
                                                                    &g_key_file_unref);
  if (g_key_file_load_from_file(file.get(), entry.c_str(), G_KEY_FILE_NONE, nullptr) == FALSE) {
    return false;
  }
  const std::unique_ptr<char, decltype(&g_free)> type(
      g_key_file_get_string(file.get(), G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_TYPE,
                            nullptr),
      &g_free);
  return type != nullptr && std::string(type.get()) == G_KEY_FILE_DESKTOP_TYPE_APPLICATION &&
         g_key_file_get_boolean(file.get(), G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_HIDDEN,
                                nullptr) == FALSE;
}

}  // namespace

std::vector<Url> DesktopEntryRegistry::applicationUrlsForBundleIdentifier(
    const std::string& identifier) {
  // Identifiers come from pages: one that cannot be the name of an entry is not looked for.
  constexpr std::size_t kLongestIdentifier = 255;
  if (identifier.empty() || identifier.size() > kLongestIdentifier ||
      identifier.find_first_of(std::string_view("/\0", 2)) != std::string::npos) {
    return {};
  }
  for (const fs::path& folder : dataFolders()) {
    // The first entry of an id hides the later ones, even if all it says is that it is removed.
    if (const auto entry = findEntry(folder / "applications", identifier + ".desktop")) {
      return isApplication(*entry) ? std::vector{Url::fileUrl(entry->string())}
                                   : std::vector<Url>();
    }
  }
  return {};
}

}  // namespace qorix
