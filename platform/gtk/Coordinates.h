#pragma once

#include <gdk/gdk.h>

#include <vector>

#include <qorix/platform/Geometry.h>

namespace qorix::gtk {

/// The longest side that the web engine paints; what is longer is cut off.
inline constexpr int kLongestSide = 16'384;

/// The nearest whole coordinate; halves go up, on either side of zero, so that a rectangle keeps
/// its size wherever it lies. What is farther than a million away is there; what is no number is 0.
int wholeCoordinate(double value);

/// `rect`, which is in an area of the given height with y upwards, in whole coordinates with y
/// downwards, and back. No side is negative or longer than `kLongestSide`.
GdkRectangle flipped(const Rect& rect, int areaHeight);
Rect flipped(const GdkRectangle& rect, int areaHeight);

/// `rect` as a native window can be placed: with a side of at least 1 and at most `kLongestSide`,
/// and no farther away than its coordinates reach.
GdkRectangle placeable(const GdkRectangle& rect);

/// `rect`, moved as far as it takes to lie in `area`; what is too large for it begins at its lower
/// left corner.
Rect movedInto(const Rect& rect, const Rect& area);

/// How far down those of a desktop's monitors reach, from its top; 0 without a monitor.
int lowestEdge(const std::vector<GdkRectangle>& monitors);

/// The index of the monitor that the largest part of `area` is on, -1 when it is on none. Without
/// an extent of its own the area counts as one unit large.
int monitorOf(const GdkRectangle& area, const std::vector<GdkRectangle>& monitors);

}  // namespace qorix::gtk
