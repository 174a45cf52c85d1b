#include "platform/linux/LinuxBundle.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <filesystem>
#include <utility>

#include <qorix/platform/Platform.h>

namespace qorix {

namespace {

std::string programPath() {
  std::error_code error;
  const auto path = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? "/" : path.string();
}

std::string libraryPath() {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<const void*>(&installPlatform), &info) == 0 ||
      info.dli_fname == nullptr) {
    return programPath();
  }
  if (info.dli_fname[0] == '/') {
    return info.dli_fname;
  }
  // The library was found by a relative search path, or is part of a program started by a bare
  // name.
  const std::unique_ptr<char, decltype(&::free)> path(::realpath(info.dli_fname, nullptr), &::free);
  return path == nullptr ? programPath() : path.get();
}

}  // namespace

std::shared_ptr<const Bundle> hostBundle(std::optional<std::string> bundleIdentifier) {
  return std::make_shared<const Bundle>(std::move(bundleIdentifier), Url::fileUrl(programPath()));
}

std::shared_ptr<const Bundle> libraryBundle() {
  return std::make_shared<const Bundle>(std::nullopt, Url::fileUrl(libraryPath()));
}

}  // namespace qorix
