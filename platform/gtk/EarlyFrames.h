#pragma once

#include <optional>

#include <qorix/platform/Geometry.h>

#include "platform/gtk/Desktop.h"

namespace qorix::gtk {

/// Until its decorations are known, the frame of a window counts as being its content. This
/// remembers what was asked for in such frames, so that the window can be laid out again.
class EarlyFrames {
 public:
  /// A caller has been told a frame of this size.
  void noteTold(const Size& size) { toldSize_ = size; }

  /// A caller has got the frame around `content`.
  void noteMadeFor(const Rect& content);

  /// The window has got this frame, from a caller or by centring it.
  void noteSet(const Rect& frame);
  void noteCentered(const Rect& frame);

  /// The content that was meant, now that the decorations are known; absent if it is as it was set.
  std::optional<Rect> contentWithin(const Decorations& decorations) const;

 private:
  enum class Meaning {
    content,             // a frame that was made for a content stands for that
    contentOfFrameSize,  // likewise, but the content was given the size of a frame
    frame,
    centeredFrame,
  };

  std::optional<Size> toldSize_;
  std::optional<Rect> madeFor_;
  bool isMadeForFrameSize_ = false;
  Meaning meaning_ = Meaning::content;
  Rect set_;
};

}  // namespace qorix::gtk
