#pragma once

namespace qorix::gtk {

/// Lets the page's watcher see into frames that run no scripts: the engine calls no listener of a
/// script there, in whatever world. The watcher finds two functions in its world:
///
/// - qorixOwnsFrame(document): it sees the frame's own events itself.
/// - qorixWatchFrame(element, onClick, onLoad): watches what the frame of `element` shows now, and
///   the frames inside of it, if the watcher sees nothing there; answers whether that is so. Calls
///   onClick(target, isByPointer, x, y) for each click, before anything else hears of it, and
///   onLoad() for each frame inside of it that has loaded.
///
/// Called once, when the module is loaded.
void watchScriptlessFrames();

}  // namespace qorix::gtk
