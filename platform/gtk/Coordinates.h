#pragma once

#include <gdk/gdk.h>

#include <vector>

#include <qorix/platform/Geometry.h>

namespace qorix::gtk {

/// The longest side that the web engine paints. Longer sides are cut off.
inline constexpr int kLongestSide = 16'384;

/// The nearest whole coordinate. Halves are rounded up, on either side of zero, so that a rectangle
/// keeps its size wherever it lies. Limited to a million on either side; 0 for a NaN.
int wholeCoordinate(double value);

/// Converts `rect` in an area of the given height from y upwards to whole coordinates with y
/// downwards, and back. No side of the former result is negative or longer than `kLongestSide`.
GdkRectangle flipped(const Rect& rect, int areaHeight);
Rect flipped(const GdkRectangle& rect, int areaHeight);

/// `rect` as far as a native window can be placed so: with sides from 1 to `kLongestSide`, and no
/// farther away than its coordinates reach.
GdkRectangle placeable(const GdkRectangle& rect);

/// `rect`, moved no farther than needed to lie in `area`. If it is too large, it begins at the
/// lower left corner of `area`.
Rect movedInto(const Rect& rect, const Rect& area);

/// How far down the monitors of a desktop reach, from its top; 0 if there are none.
int lowestEdge(const std::vector<GdkRectangle>& monitors);

/// The index of the monitor with the largest part of `area`; -1 if no part is on any. An area
/// without extent counts as one unit large.
int monitorOf(const GdkRectangle& area, const std::vector<GdkRectangle>& monitors);

}  // namespace qorix::gtk
