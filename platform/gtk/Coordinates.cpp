#include "platform/gtk/Coordinates.h"

#include <algorithm>
#include <cmath>

namespace qorix::gtk {

int wholeCoordinate(double value) {
  constexpr double kFarthest = 16'000;
  return static_cast<int>(std::floor(std::clamp(value, -kFarthest, kFarthest) + 0.5));
}

GdkRectangle flipped(const Rect& rect, int areaHeight) {
  const int left = wholeCoordinate(rect.origin.x);
  const int right = wholeCoordinate(rect.origin.x + rect.size.width);
  const int top = wholeCoordinate(areaHeight - (rect.origin.y + rect.size.height));
  const int bottom = wholeCoordinate(areaHeight - rect.origin.y);
  if (right <= left || bottom <= top) {
    return {-1, -1, 1, 1};
  }
  return {left, top, right - left, bottom - top};
}

Rect flipped(const GdkRectangle& rect, int areaHeight) {
  return {{static_cast<double>(rect.x), static_cast<double>(areaHeight - rect.y - rect.height)},
          {static_cast<double>(rect.width), static_cast<double>(rect.height)}};
}

}  // namespace qorix::gtk
