#pragma once

#include <gdk/gdk.h>

#include "platform/Geometry.h"

namespace qorix::gtk {

/// The nearest whole coordinate; halves go up, on either side of zero, so that a rectangle keeps
/// its size wherever it lies. Kept within what window systems can address.
int wholeCoordinate(double value);

/// `rect`, which is in an area of the given height with y upwards, in whole coordinates with y
/// downwards, and back. An empty rectangle lies, one unit large, just outside of the area.
GdkRectangle flipped(const Rect& rect, int areaHeight);
Rect flipped(const GdkRectangle& rect, int areaHeight);

}  // namespace qorix::gtk
