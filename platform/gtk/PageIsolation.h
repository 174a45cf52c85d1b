#pragma once

using WebKitWebContext = struct _WebKitWebContext;

namespace qorix::gtk {

/// Megabytes that the web process of one page may use. A page that fills its banner with pictures
/// and a video stays far below. The engine ends a page above it before the user's machine suffers.
inline constexpr unsigned kPageMemoryLimit = 768;

/// A new web context that limits what pages can do to the user's machine: nothing of them is
/// stored, and their web processes have the memory limit and run in the engine's sandbox. If the
/// system cannot make a sandbox, they run without one, after one log line. Takes the time of a
/// short program's run.
WebKitWebContext* newIsolatedWebContext();

}  // namespace qorix::gtk
