#include "platform/gtk/WebProcessModule.h"

#include <dlfcn.h>
#include <webkit2/webkit2.h>

#include <filesystem>

namespace qorix::gtk {

namespace {

namespace fs = std::filesystem;

fs::path libraryFolder() {
  std::error_code error;
  Dl_info info{};
  // The name may be relative: to where the process found the library, or the program that holds it.
  if (::dladdr(reinterpret_cast<const void*>(&loadModuleIntoWebProcesses), &info) != 0 &&
      info.dli_fname != nullptr) {
    const fs::path file = fs::canonical(info.dli_fname, error);
    if (!error) {
      return file.parent_path();
    }
  }
  return fs::read_symlink("/proc/self/exe", error).parent_path();
}

}  // namespace

std::string webProcessModulePath() {
  const fs::path own = libraryFolder();
  const fs::path module = fs::path(QORIX_MODULE_FOLDER) / "qorix-webprocess.so";
  for (const auto& folder : {own, own / ".." / QORIX_LIBDIR, fs::path(QORIX_FULL_LIBDIR)}) {
    std::error_code error;
    if (fs::exists(folder / module, error)) {
      return (folder / module).lexically_normal().string();
    }
  }
  return (own / module).string();
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
