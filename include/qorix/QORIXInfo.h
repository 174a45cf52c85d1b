#pragma once

// For hosts.

#include <string>

#include <qorix/Export.h>

namespace qorix {

/// What the library says of itself, for people. Never instantiated.
class QORIX_EXPORT QORIXInfo {
 public:
  QORIXInfo() = delete;

  /// One line with the internal version, which is independent of `QORIXVersionNumber`, and the
  /// build's date and time. Any thread.
  ///
  /// {QORIXFramework Info: QORIXFrameworkInternalVersion=25.3.0, QORIX compile on [...]}
  static std::string frameworkInfoString();
};

}  // namespace qorix
