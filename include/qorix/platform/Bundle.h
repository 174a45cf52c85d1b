#pragma once

// Platform: values and ports.

#include <optional>
#include <string>
#include <utility>

#include <qorix/Export.h>
#include <qorix/platform/Object.h>
#include <qorix/platform/Url.h>

namespace qorix {

/// What identifies a program or a library on this machine. Immutable; usable on any thread.
class QORIX_EXPORT Bundle : public Object {
 public:
  /// `bundleIdentifier` is a reverse-DNS name such as "com.example.editor", or absent;
  /// `executableUrl` the file URL of the program's or library's own file.
  Bundle(std::optional<std::string> bundleIdentifier, Url executableUrl)
      : bundleIdentifier_(std::move(bundleIdentifier)), executableUrl_(std::move(executableUrl)) {}

  /// The reverse-DNS name that the constructor was given; absent for a program that has none.
  const std::optional<std::string>& bundleIdentifier() const { return bundleIdentifier_; }
  /// The file URL of the program's or library's own file.
  const Url& executableUrl() const { return executableUrl_; }

 private:
  std::optional<std::string> bundleIdentifier_;
  Url executableUrl_;
};

}  // namespace qorix
