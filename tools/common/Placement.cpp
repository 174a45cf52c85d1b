#include "tools/common/Placement.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace qorix::tools {

namespace {

constexpr std::array<std::string_view, 8> kAnchors = {
    "top right",   "right edge, middle", "bottom right", "bottom edge, middle",
    "bottom left", "left edge, middle",  "top left",     "top edge, middle"};

}  // namespace

std::string placementOf(const MyPushAdInfo& info) {
  const auto embed = info.embed();
  if (embed < 0) {
    return "nothing";
  }
  if (embed == 0) {
    return "pop-up";
  }
  const auto index = static_cast<std::size_t>(embed) - 1;
  return "banner, " +
         std::string(index < kAnchors.size() ? kAnchors[index] : "lower left, without offsets");
}

}  // namespace qorix::tools
