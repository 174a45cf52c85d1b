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

  const std::optional<std::string>& bundleIdentifier() const { return bundleIdentifier_; }
  const Url& executableUrl() const { return executableUrl_; }

 private:
  std::optional<std::string> bundleIdentifier_;
  Url executableUrl_;
};

}  // namespace qorix
