#pragma once

namespace qorix::gtk {

/// Lets the page's watcher see into frames that run no scripts: there the engine calls no listener
/// of a script, in any world. The watcher gets two functions in its world:
///
/// - qorixOwnsFrame(document): says that the watcher sees this frame's events itself.
/// - qorixWatchFrame(element, onClick, onLoad): if the watcher sees nothing in the frame of
/// `element`,
///   watches what that frame shows now, and the frames inside it. Returns whether it does. Calls
///   onClick(target, isByPointer, x, y) for each click, before the page's own listeners, and
///   onLoad() for each frame inside it that has loaded.
///
/// To be called once, when the module is loaded.
void watchScriptlessFrames();

}  // namespace qorix::gtk
