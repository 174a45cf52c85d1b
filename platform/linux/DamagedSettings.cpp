#include "platform/linux/DamagedSettings.h"

#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qorix {

namespace {

constexpr int kPause = 5;  // milliseconds between two attempts to take the lock

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

bool exists(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

std::string unusedName(const std::string& path) {
  for (int number = 1;; ++number) {
    std::string name = path + ".damaged-" + std::to_string(number);
    if (!exists(name) && !exists(name + "-wal") && !exists(name + "-shm")) {
      return name;
    }
  }
}

}  // namespace

SettingsFolderLock::SettingsFolderLock(const std::string& path, int patience)
    : descriptor_(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  const auto take = [&] {
    isHeld_ = descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
    return isHeld_;
  };
  for (int left = patience; !take() && left > 0; left -= kPause) {
    ::poll(nullptr, 0, kPause);
  }
}

SettingsFolderLock::~SettingsFolderLock() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

std::optional<std::string> keepDamagedSettings(const std::string& path) {
  const std::string name = unusedName(path);
  // The companions first: if the process is killed in between, the damaged file is found again, and
  // there is never a new file beside the companions of the old one.
  for (const char* companion : {"-wal", "-shm"}) {
    ::rename((path + companion).c_str(), (name + companion).c_str());
  }
  return ::rename(path.c_str(), name.c_str()) == 0 ? std::optional(name) : std::nullopt;
}

}  // namespace qorix
