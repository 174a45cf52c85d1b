#include "platform/gtk/Coordinates.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace qorix::gtk {

namespace {

constexpr double kFarthest = 1'000'000;
constexpr int kFarthestWindow = 16'000;

double rounded(double value) { return std::floor(value + 0.5); }

int sideBetween(double low, double high) {
  const double side = rounded(high) - rounded(low);
  // Written so that a NaN gives 0.
  return side > 0 ? static_cast<int>(std::min(side, double{kLongestSide})) : 0;
}

}  // namespace

int wholeCoordinate(double value) {
  return std::isnan(value) ? 0
                           : static_cast<int>(std::clamp(rounded(value), -kFarthest, kFarthest));
}

GdkRectangle flipped(const Rect& rect, int areaHeight) {
  const double right = rect.origin.x + rect.size.width;
  const double top = areaHeight - (rect.origin.y + rect.size.height);
  const double bottom = areaHeight - rect.origin.y;
  return {wholeCoordinate(rect.origin.x), wholeCoordinate(top), sideBetween(rect.origin.x, right),
          sideBetween(top, bottom)};
}

Rect flipped(const GdkRectangle& rect, int areaHeight) {
  return {{static_cast<double>(rect.x), static_cast<double>(areaHeight - rect.y - rect.height)},
          {static_cast<double>(rect.width), static_cast<double>(rect.height)}};
}

GdkRectangle placeable(const GdkRectangle& rect) {
  return {std::clamp(rect.x, -kFarthestWindow, kFarthestWindow),
          std::clamp(rect.y, -kFarthestWindow, kFarthestWindow),
          std::clamp(rect.width, 1, kLongestSide), std::clamp(rect.height, 1, kLongestSide)};
}

Rect movedInto(const Rect& rect, const Rect& area) {
  const auto moved = [](double low, double side, double areaLow, double areaSide) {
    return std::clamp(low, areaLow, std::max(areaLow, areaLow + areaSide - side));
  };
  return {{moved(rect.origin.x, rect.size.width, area.origin.x, area.size.width),
           moved(rect.origin.y, rect.size.height, area.origin.y, area.size.height)},
          rect.size};
}

int lowestEdge(const std::vector<GdkRectangle>& monitors) {
  int lowest = 0;
  for (const GdkRectangle& each : monitors) {
    lowest = std::max(lowest, each.y + each.height);
  }
  return lowest;
}

int monitorOf(const GdkRectangle& area, const std::vector<GdkRectangle>& monitors) {
  const GdkRectangle extended = {area.x, area.y, std::max(area.width, 1), std::max(area.height, 1)};
  int best = -1;
  std::int64_t bestExtent = 0;
  for (std::size_t i = 0; i < monitors.size(); ++i) {
    GdkRectangle common = {0, 0, 0, 0};
    if (gdk_rectangle_intersect(&monitors[i], &extended, &common) != FALSE) {
      const std::int64_t extent = std::int64_t{common.width} * common.height;
      if (extent > bestExtent) {
        bestExtent = extent;
        best = static_cast<int>(i);
      }
    }
  }
  return best;
}

}  // namespace qorix::gtk
