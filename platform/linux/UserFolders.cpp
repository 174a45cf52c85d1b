#include "platform/linux/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace qorix {

namespace {

std::string homeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') {
    return home;
  }
  std::array<char, 16384> buffer{};
  passwd entry{};
  passwd* found = nullptr;
  ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
  return found == nullptr ? "" : found->pw_dir;
}

std::string folderOf(const char* variable, const char* belowHome) {
  const char* folder = std::getenv(variable);
  return folder != nullptr && folder[0] == '/' ? folder : homeFolder() + belowHome;
}

}  // namespace

std::string userConfigurationFolder() { return folderOf("XDG_CONFIG_HOME", "/.config"); }

std::string userDataFolder() { return folderOf("XDG_DATA_HOME", "/.local/share"); }

}  // namespace qorix
