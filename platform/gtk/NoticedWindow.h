#pragma once

using GtkWindow = struct _GtkWindow;

namespace qorix::gtk {

/// Hears that a window made by `newNoticedWindow` is being destroyed.
class NoticedWindowOwner {
 public:
  virtual ~NoticedWindowOwner() = default;

  /// Called before anything of the window is gone, each time that somebody destroys it. What it
  /// throws is logged.
  virtual void nativeWillBeDestroyed() = 0;
};

/// A new toplevel GtkWindow that reports its destruction to its owner while it is still whole.
/// GTK's own signal comes too late for that: the window is hidden by then.
GtkWindow* newNoticedWindow(NoticedWindowOwner* owner);

/// From now on the window reports nothing.
void forgetOwnerOf(GtkWindow* window);

}  // namespace qorix::gtk
