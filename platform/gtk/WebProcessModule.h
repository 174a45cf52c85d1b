#pragma once

#include <string>

using WebKitWebContext = struct _WebKitWebContext;

namespace qorix::gtk {

/// The path of the library's module for web processes. It is in a folder of its own: beside the
/// file that holds this library, which may be a program; else where libraries are in the program's
/// own prefix; else where this library was to be installed.
std::string webProcessModulePath();

/// Makes `context` load the module into each of its web processes. Without the module pages are
/// shown, but no script can be evaluated in them.
void loadModuleIntoWebProcesses(WebKitWebContext* context);

}  // namespace qorix::gtk
