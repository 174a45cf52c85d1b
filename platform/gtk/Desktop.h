#pragma once

#include <memory>
#include <optional>

#include <qorix/platform/Geometry.h>
#include <qorix/platform/Screen.h>

using GdkWindow = struct _GdkWindow;

namespace qorix::gtk {

/// What the window manager puts around a window's content.
struct Decorations {
  double left = 0;
  double right = 0;
  double top = 0;
  double bottom = 0;
  bool operator==(const Decorations&) const = default;
};

/// Height of the whole desktop, all monitors together.
int desktopHeight();

/// The monitor that the largest part of `frame` (in screen coordinates) is on, or null. A frame
/// without extent is on the monitor that it lies on.
std::shared_ptr<Screen> screenOfFrame(const Rect& frame);

/// The monitor where windows appear that nobody has placed; null when there is no monitor.
std::shared_ptr<Screen> primaryScreen();

/// What the window manager says that it has put, or is going to put, around `window`; nothing when
/// it does not say.
std::optional<Decorations> decorationsOfWindow(GdkWindow* window);

/// Asks the window manager to say so for a window that has not been shown yet, and waits a moment
/// for the answer.
void requestDecorations(GdkWindow* window);

}  // namespace qorix::gtk
