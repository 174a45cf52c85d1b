#pragma once

#include <qorix/platform/Url.h>

using WebKitUserContentManager = struct _WebKitUserContentManager;
using WebKitWebContext = struct _WebKitWebContext;

namespace qorix::gtk {

/// Megabytes that the web process of one page may use. A page that fills its banner with pictures
/// and a video stays far below; one above it is ended by the engine before the user's machine
/// suffers.
inline constexpr unsigned kPageMemoryLimit = 768;

/// A new web context that keeps what pages can do to the user's machine in bounds: nothing of them
/// is stored, their web processes have the memory limit, and run in the engine's sandbox where the
/// system lets it make one; one log line where it does not. Takes the time of one short program.
WebKitWebContext* newIsolatedWebContext();

}  // namespace qorix::gtk
