#pragma once

// Platform: values and ports.

#include <string>
#include <vector>

#include <qorix/Export.h>
#include <qorix/platform/Url.h>

namespace qorix {

/// The applications that are registered with the desktop, by identifier. Main thread only.
class QORIX_EXPORT ApplicationRegistry {
 public:
  virtual ~ApplicationRegistry() = default;

  /// Where the applications with exactly this bundle identifier are; empty when none is known.
  /// Looked up afresh on every call.
  virtual std::vector<Url> applicationUrlsForBundleIdentifier(const std::string& identifier) = 0;
};

}  // namespace qorix
