#pragma once

#include <optional>
#include <string>

namespace qorix {

/// Who the host is, as its pages are told.
class HostIdentifier {
 public:
  using Source = std::optional<std::string> (*)();

  /// The manager knows, but lies above this room: it hands in whom to ask when the library is
  /// loaded. Later calls replace the source.
  static void setSource(Source source);

  /// The host's bundle identifier, read afresh; empty while nobody knows it. Any thread.
  static std::string current();
};

}  // namespace qorix
