#pragma once

#include <string>

using WebKitWebContext = struct _WebKitWebContext;

namespace qorix::gtk {

/// The library's module for web processes: in the folder "qorix-gtk3" beside the file that holds
/// this library.
std::string webProcessModulePath();

/// Has `context` load the module into each of its web processes. Without it pages are shown, but
/// nothing is ever evaluated in them.
void loadModuleIntoWebProcesses(WebKitWebContext* context);

}  // namespace qorix::gtk
