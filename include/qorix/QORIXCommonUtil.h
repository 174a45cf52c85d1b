#pragma once

#include <string>

namespace qorix {

/// Never instantiated.
class QORIXCommonUtil {
 public:
  QORIXCommonUtil() = delete;

  /// When this library was built, in the builder's time zone, or in UTC when the build was given
  /// SOURCE_DATE_EPOCH. Any thread.
  ///
  ///   QORIX compile on [Jan  5 2024 - 09:41:07]
  static std::string fetchQORIXCompileDateTimeString();
};

}  // namespace qorix
