#pragma once

// Platform: values and ports.

#include <string>
#include <string_view>

#include <qorix/Export.h>

namespace qorix {

/// Where log lines go.
class QORIX_EXPORT Log {
 public:
  virtual ~Log() = default;

  /// Writes one message. May be called on any thread; never fails towards the caller. The message
  /// is UTF-8 and may hold line breaks; how they are shown is the log's own business.
  virtual void write(std::string_view message) = 0;
};

/// An internal expectation is broken; the work goes on.
inline constexpr std::string_view kVerifyFailed = "ZAM Verify failed!";
/// Bad input; the operation is abandoned.
inline constexpr std::string_view kFatalError =
    "***Error***: fatal error found, go to pre-defined condition.";
/// A fault of configuration.
inline constexpr std::string_view kConfigurationError = "***Error***: ZAM FATAL ERROR GOT!";

/// Writes `message` as it stands to the installed platform's log.
QORIX_EXPORT void logLine(std::string_view message);

/// Writes "<method> <line>: ZAM <=> <message>". `method` is the system's own method name, such as
/// "-[MyPushAdInfo doCheck]", and `line` the number that belongs to the message, whatever the C++
/// function and its line are; both are part of the message that hosts and authors rely on.
QORIX_EXPORT void logCheck(std::string_view method, int line, std::string_view message);

}  // namespace qorix
