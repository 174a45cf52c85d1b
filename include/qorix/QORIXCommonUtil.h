#pragma once

#include <string>

namespace qorix {

/// Never instantiated.
class QORIXCommonUtil {
 public:
  QORIXCommonUtil() = delete;

  /// When this library was built, not when it was run: "QORIX compile on [Jan  5 2024 -
  /// 09:41:07]", in the builder's time zone, or in UTC when the build was given SOURCE_DATE_EPOCH.
  /// Any thread.
  static std::string fetchQORIXCompileDateTimeString();
};

}  // namespace qorix
