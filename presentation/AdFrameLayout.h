#pragma once

#include <cstdint>

#include <qorix/platform/Geometry.h>

namespace qorix {

/// How a banner wants to be placed; see MyPushAdInfo for the members.
struct BannerPlacement {
  std::int64_t embed = 0;
  Size size;
  double offsetx = 0;
  double offsety = 0;
};

/// The banner's frame in a host view of that size. Nothing is clamped: the banner may pass the
/// host's edges. The expressions are evaluated as written, so that equal input gives equal bits
/// everywhere.
Rect bannerFrame(const Size& host, const BannerPlacement& placement);

/// The rectangle of that size in the middle of `visibleFrame`; its origin has single precision
/// only.
Rect centeredContentRect(const Size& content, const Rect& visibleFrame);

}  // namespace qorix
