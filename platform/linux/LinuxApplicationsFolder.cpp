#include "platform/linux/LinuxApplicationsFolder.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string_view>
#include <utility>

namespace qorix {

namespace {

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

Directory openDirectory(const std::string& path, int flags) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags);
  if (descriptor < 0) {
    return nullptr;
  }
  Directory directory(::fdopendir(descriptor));
  if (directory == nullptr) {
    ::close(descriptor);
  }
  return directory;
}

bool hasBundleName(std::string_view name) {
  return name.ends_with(".app") || name.ends_with(".AppDir");
}

bool hasEntryName(std::string_view name) { return name.ends_with(".desktop"); }

/// The type, as d_type has it. DT_UNKNOWN, which is 0, if it cannot be read; a link that leads
/// nowhere is DT_LNK.
unsigned char typeOf(DIR* directory, const char* name, int flags) {
  struct stat status {};
  if (::fstatat(::dirfd(directory), name, &status, flags) == 0) {
    return static_cast<unsigned char>(IFTODT(status.st_mode));
  }
  const bool leadsNowhere = errno == ENOENT || errno == ELOOP || errno == ENOTDIR;
  return leadsNowhere ? static_cast<unsigned char>(DT_LNK) : static_cast<unsigned char>(DT_UNKNOWN);
}

struct Kind {
  std::optional<bool> isPackage;
  bool isFolder = false;  // an ordinary directory, to be read as well
};

Kind kindOf(DIR* directory, const dirent& entry) {
  const std::string_view name = entry.d_name;
  unsigned char type = entry.d_type;
  if (type == DT_UNKNOWN) {
    type = typeOf(directory, entry.d_name, AT_SYMLINK_NOFOLLOW);
  }
  const bool isLink = type == DT_LNK;
  // Where a link leads matters only if it has a package's name.
  if (isLink && (hasBundleName(name) || hasEntryName(name))) {
    type = typeOf(directory, entry.d_name, 0);
  }
  if (type == DT_UNKNOWN) {
    return {.isPackage = std::nullopt};
  }
  const bool isPackage =
      (type == DT_DIR && hasBundleName(name)) || (type == DT_REG && hasEntryName(name));
  return {.isPackage = isPackage, .isFolder = type == DT_DIR && !isPackage && !isLink};
}

void readFolder(DIR* directory, const std::string& path,
                std::vector<ApplicationsFolder::Item>& items, std::vector<std::string>& folders) {
  while (const dirent* entry = ::readdir(directory)) {
    if (entry->d_name[0] == '.') {
      continue;
    }
    const Kind kind = kindOf(directory, *entry);
    items.push_back({.isPackage = kind.isPackage, .name = entry->d_name});
    if (kind.isFolder) {
      folders.push_back(path + '/' + entry->d_name);
    }
  }
}

}  // namespace

LinuxApplicationsFolder::LinuxApplicationsFolder(std::string folder) : folder_(std::move(folder)) {}

std::vector<std::string> LinuxApplicationsFolder::directories() {
  return folder_.empty() ? std::vector<std::string>() : std::vector{folder_};
}

std::optional<std::vector<ApplicationsFolder::Item>> LinuxApplicationsFolder::items(
    const std::string& directory) {
  Directory opened = openDirectory(directory, 0);
  if (opened == nullptr) {
    return std::nullopt;
  }
  std::vector<Item> items;
  // A list of the folders still to be read, not a recursion: a tree may be deeper than the stack.
  std::vector<std::string> folders;
  readFolder(opened.get(), directory, items, folders);
  while (!folders.empty()) {
    const std::string path = std::move(folders.back());
    folders.pop_back();
    opened = openDirectory(path, O_NOFOLLOW);
    if (opened != nullptr) {
      readFolder(opened.get(), path, items, folders);
    }
  }
  return items;
}

}  // namespace qorix
