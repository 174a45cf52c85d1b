#pragma once

// For hosts.

#include <string>

#include <qorix/Export.h>

namespace qorix {

/// Never instantiated.
class QORIX_EXPORT QORIXCommonUtil {
 public:
  QORIXCommonUtil() = delete;

  /// When this library was built, in the builder's time zone, or in UTC when the build was given
  /// SOURCE_DATE_EPOCH. Any thread.
  ///
  ///   QORIX compile on [Jan  5 2024 - 09:41:07]
  static std::string fetchQORIXCompileDateTimeString();
};

}  // namespace qorix
