#include "platform/gtk/WebProcessModule.h"

#include <dlfcn.h>
#include <link.h>
#include <webkit2/webkit2.h>

#include <filesystem>
#include <vector>

namespace qorix::gtk {

namespace {

namespace fs = std::filesystem;

/// The folder of the file that holds this library; empty if that cannot be learned.
fs::path libraryFolder() {
  std::error_code error;
  Dl_info info{};
  link_map* map = nullptr;
  const int found = ::dladdr1(reinterpret_cast<const void*>(&loadModuleIntoWebProcesses), &info,
                              reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP);
  // A program has no name here, and elsewhere just that by which it was called.
  const bool isProgram = found == 0 || map == nullptr || *map->l_name == '\0';
  const fs::path file = fs::canonical(isProgram ? "/proc/self/exe" : map->l_name, error);
  return error ? fs::path() : file.parent_path();
}

}  // namespace

std::string webProcessModulePath() {
  const fs::path module = fs::path(QORIX_MODULE_FOLDER) / "qorix-webprocess.so";
  std::vector<fs::path> folders;
  if (const fs::path own = libraryFolder(); !own.empty()) {
    folders = {own, own / ".." / QORIX_LIBDIR};
  }
  folders.emplace_back(QORIX_FULL_LIBDIR);
  for (const auto& folder : folders) {
    std::error_code error;
    if (fs::exists(folder / module, error)) {
      return (folder / module).lexically_normal().string();
    }
  }
  return (folders.front() / module).string();
}

// The engine loads every module in the folder, which it cannot see from its sandbox otherwise.
void loadModuleIntoWebProcesses(WebKitWebContext* context) {
  const fs::path folder = fs::path(webProcessModulePath()).parent_path();
  std::error_code error;
  if (!fs::is_directory(folder, error)) {
    return;  // what this costs is logged with the first evaluation
  }
  webkit_web_context_set_web_extensions_directory(context, folder.c_str());
  webkit_web_context_add_path_to_sandbox(context, folder.c_str(), TRUE);
}

}  // namespace qorix::gtk
