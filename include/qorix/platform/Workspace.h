#pragma once

// Platform: values and ports.

#include <qorix/Export.h>
#include <qorix/platform/Url.h>

namespace qorix {

/// The user's desktop. Main thread only.
class QORIX_EXPORT Workspace {
 public:
  virtual ~Workspace() = default;

  /// Hands `url` to the program that the desktop has registered for it, and returns without waiting
  /// for that program. An address that nothing opens is dropped silently.
  virtual void openUrl(const Url& url) = 0;
};

}  // namespace qorix
