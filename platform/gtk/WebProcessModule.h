#pragma once

#include <string>

using WebKitWebContext = struct _WebKitWebContext;

namespace qorix::gtk {

/// The path of the library's module for web processes: in the folder "qorix-gtk3" beside the file
/// that holds this library.
std::string webProcessModulePath();

/// Makes `context` load the module into each of its web processes. Without the module pages are
/// shown, but no script can be evaluated in them.
void loadModuleIntoWebProcesses(WebKitWebContext* context);

}  // namespace qorix::gtk
