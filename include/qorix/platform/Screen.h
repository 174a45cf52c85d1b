#pragma once

// Platform: values and ports.

#include <qorix/Export.h>
#include <qorix/platform/Geometry.h>
#include <qorix/platform/Object.h>

namespace qorix {

/// One monitor of the desktop. Main thread only.
class QORIX_EXPORT Screen : public Object {
 public:
  /// The area that panels and docks leave to windows, in screen coordinates: the origin of the
  /// desktop is its lower left corner, y grows upwards.
  virtual Rect visibleFrame() const = 0;
};

}  // namespace qorix
