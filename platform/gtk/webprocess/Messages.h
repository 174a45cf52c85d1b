#pragma once

namespace qorix::gtk {

// The messages between the library and its module in the engine's web process.

/// The script world of the page's watcher.
inline constexpr const char* kWorldName = "qorix";

/// Asks the module to evaluate a script, which is the message's bytes ("ay"). The reply, of the
/// same name, holds the text of its value ("ay").
inline constexpr const char* kEvaluateMessage = "qorix-evaluate";

}  // namespace qorix::gtk
