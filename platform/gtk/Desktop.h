#pragma once

#include <memory>
#include <optional>

#include <qorix/platform/Geometry.h>
#include <qorix/platform/Screen.h>

using GdkEventProperty = struct _GdkEventProperty;
using GdkWindow = struct _GdkWindow;

namespace qorix::gtk {

/// The widths of what the window manager puts around a window's content.
struct Decorations {
  double left = 0;
  double right = 0;
  double top = 0;
  double bottom = 0;
  bool operator==(const Decorations&) const = default;
};

/// Whether there is a connection to a display; without one GTK can make nothing. If there is none,
/// one line is logged: `what` cannot be made.
bool hasDisplay(const char* what);

/// The height of the whole desktop, all monitors together; 0 without a display.
int desktopHeight();

/// The monitor with the largest part of `frame` (in screen coordinates); null if no part is on any.
/// A frame without extent counts as one point large.
std::shared_ptr<Screen> screenOfFrame(const Rect& frame);

/// The monitor on which windows appear that nobody has placed; null if there is no monitor
/// or no display.
std::shared_ptr<Screen> primaryScreen();

/// What the window manager says it has put, or will put, around `window`; absent if it does not
/// say.
std::optional<Decorations> decorationsOfWindow(GdkWindow* window);

/// Asks the window manager what it will put around a window that has not been shown yet. Returns
/// false if there is none that says so. It answers by a property of the window.
bool requestDecorations(GdkWindow* window);

/// Whether the window manager has just said what it puts around a window.
bool isAboutDecorations(const GdkEventProperty& event);

}  // namespace qorix::gtk
