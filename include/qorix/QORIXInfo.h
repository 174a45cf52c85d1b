#pragma once

#include <string>

namespace qorix {

/// What the library says of itself, for people. Never instantiated.
class QORIXInfo {
 public:
  QORIXInfo() = delete;

  /// One line with the internal version, which is independent of `QORIXVersionNumber`, and the
  /// build's date and time: "{QORIXFramework Info: QORIXFrameworkInternalVersion=25.3.0, QORIX
  /// compile on [Jan  5 2024 - 09:41:07]}". Any thread.
  static std::string frameworkInfoString();
};

}  // namespace qorix
