#include "presentation/AdFrameLayout.h"

namespace qorix {

namespace {

Point bannerOrigin(const Size& host, const BannerPlacement& placement) {
  const auto [W, H] = host;
  const auto [w, h] = placement.size;
  const double ox = placement.offsetx;
  const double oy = placement.offsety;
  // Clockwise from the top right corner. On a centred axis the offset is subtracted, too.
  switch (placement.embed) {
    case 1:
      return {W - w - ox, H - h - oy};
    case 2:
      return {W - w - ox, H - (0.5 * h + 0.5 * H) - oy};
    case 3:
      return {W - w - ox, oy};
    case 4:
      return {0.5 * W - 0.5 * w - ox, oy};
    case 5:
      return {ox, oy};
    case 6:
      return {ox, 0.5 * H - 0.5 * h - oy};
    case 7:
      return {ox, H - h - oy};
    case 8:
      return {0.5 * W - 0.5 * w - ox, H - h - oy};
    default:
      return {0, 0};
  }
}

double withSinglePrecision(double value) {
  // g++ 12 drops the two conversions when it vectorises a pair of them; volatile keeps it from
  // that.
  const volatile auto narrowed = static_cast<float>(value);
  return static_cast<double>(narrowed);
}

}  // namespace

Rect bannerFrame(const Size& host, const BannerPlacement& placement) {
  return {bannerOrigin(host, placement), placement.size};
}

Rect centeredContentRect(const Size& content, const Rect& visibleFrame) {
  const double x = (visibleFrame.size.width - content.width) * 0.5 + visibleFrame.origin.x;
  const double y = (visibleFrame.size.height - content.height) * 0.5 + visibleFrame.origin.y;
  return {{withSinglePrecision(x), withSinglePrecision(y)}, content};
}

}  // namespace qorix
