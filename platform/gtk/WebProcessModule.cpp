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
  // A relative name is as the process found it: also that of the program when it holds the library.
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
  return (libraryFolder() / "qorix-gtk3" / "qorix-webprocess.so").string();
}

// The engine loads whatever is in the folder, which a sandbox would not show it by itself.
void loadModuleIntoWebProcesses(WebKitWebContext* context) {
  const fs::path folder = fs::path(webProcessModulePath()).parent_path();
  webkit_web_context_set_web_extensions_directory(context, folder.c_str());
  webkit_web_context_add_path_to_sandbox(context, folder.c_str(), TRUE);
}

}  // namespace qorix::gtk
