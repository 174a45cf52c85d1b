#pragma once

// Platform: values and ports.

namespace qorix {

/// All measures are points, in double precision, with y growing upwards.
struct Size {
  double width = 0;
  double height = 0;
  bool operator==(const Size&) const = default;
};

struct Point {
  double x = 0;
  double y = 0;
  bool operator==(const Point&) const = default;
};

/// The origin is the lower left corner.
struct Rect {
  Point origin;
  Size size;
  bool operator==(const Rect&) const = default;
};

}  // namespace qorix
