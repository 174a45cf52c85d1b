#pragma once

#include <string>

namespace qorix {

// What failed checks say, spelled out: hosts and authors rely on these texts.
inline constexpr const char* kVerifyFailedMessage = "ZAM Verify failed!";
inline constexpr const char* kFatalMessage =
    "***Error***: fatal error found, go to pre-defined condition.";

/// The log's line about a check of `method`, such as "-[MyPushAdInfo doCheck]".
inline std::string checkLine(const std::string& method, int line, const std::string& message) {
  return method + " " + std::to_string(line) + ": ZAM <=> " + message;
}

}  // namespace qorix
