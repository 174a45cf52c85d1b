#pragma once

#include "platform/Geometry.h"
#include "platform/Object.h"

namespace qorix {

/// One monitor of the desktop. Main thread only.
class Screen : public Object {
 public:
  /// The area that panels and docks leave to windows, in screen coordinates: the origin of the
  /// desktop is its lower left corner, y grows upwards.
  virtual Rect visibleFrame() const = 0;
};

}  // namespace qorix
