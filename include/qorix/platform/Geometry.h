#pragma once

// Platform: values and ports.

namespace qorix {

/// A width and a height in points. All measures are in double precision.
struct Size {
  double width = 0;   ///< Points.
  double height = 0;  ///< Points.
  /// Equal when both measures are.
  bool operator==(const Size&) const = default;
};

/// A place in points, with y growing upwards.
struct Point {
  double x = 0;  ///< Points to the right.
  double y = 0;  ///< Points upwards.
  /// Equal when both coordinates are.
  bool operator==(const Point&) const = default;
};

/// An area. The origin is the lower left corner.
struct Rect {
  Point origin;  ///< The lower left corner.
  Size size;     ///< Not negative where something can be seen.
  /// Equal when origin and size are.
  bool operator==(const Rect&) const = default;
};

}  // namespace qorix
