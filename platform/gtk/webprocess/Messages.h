#pragma once

namespace qorix::gtk {

// What the library and its module in the engine's web process say to each other about a page.

/// The world of the page's watcher.
inline constexpr const char* kWorldName = "qorix";

/// To the module: evaluate the script that is the message's bytes ("ay"). The reply, of the same
/// name, holds the text of its value ("ay").
inline constexpr const char* kEvaluateMessage = "qorix-evaluate";

}  // namespace qorix::gtk
