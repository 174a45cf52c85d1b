#include "platform/gtk/EarlyFrames.h"

namespace qorix::gtk {

void EarlyFrames::noteMadeFor(const Rect& content) {
  isMadeForFrameSize_ = content.size == toldSize_;
  toldSize_.reset();
  madeFor_ = content;
}

void EarlyFrames::noteSet(const Rect& frame) {
  set_ = frame;
  if (frame != madeFor_) {
    meaning_ = Meaning::frame;
  } else {
    meaning_ = isMadeForFrameSize_ ? Meaning::contentOfFrameSize : Meaning::content;
  }
}

void EarlyFrames::noteCentered(const Rect& frame) {
  set_ = frame;
  meaning_ = Meaning::centeredFrame;
}

std::optional<Rect> EarlyFrames::contentWithin(const Decorations& decorations) const {
  const auto [left, right, top, bottom] = decorations;
  const Size around = {left + right, top + bottom};
  const auto [place, size] = set_;
  switch (meaning_) {
    case Meaning::contentOfFrameSize:  // about the same middle
      return Rect{{place.x - around.width / 2, place.y - around.height / 2},
                  {size.width + around.width, size.height + around.height}};
    case Meaning::frame:
      return Rect{{place.x + left, place.y + bottom},
                  {size.width - around.width, size.height - around.height}};
    case Meaning::centeredFrame:
      return Rect{{place.x + left - around.width / 2, place.y + bottom - around.height / 2}, size};
    case Meaning::content:
      break;
  }
  return std::nullopt;
}

}  // namespace qorix::gtk
