#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qorix {

/// What an advertisement says about its showings.
struct ShowTerms {
  bool enable = false;
  std::optional<std::string> version;
  std::int64_t count = 0;
};

/// What this machine remembers of earlier showings. Each value is asked for when it is needed,
/// after the changes decided before it have been made.
class ShownState {
 public:
  virtual ~ShownState() = default;
  virtual std::optional<std::string> version() = 0;
  virtual std::int64_t count() = 0;
  /// Makes both durable.
  virtual void restart(const std::string& version, std::int64_t count) = 0;
  /// Makes the count durable.
  virtual void setCount(std::int64_t count) = 0;
};

enum class ShowReason {
  disabled,       // switched off
  dueUncounted,   // has no version: due every time
  dueFirst,       // nothing was ever shown on this machine; granted whatever the count
  dueNewVersion,  // another version than the last one shown; counted from 0
  dueCounted,     // shown before, fewer times than the count
  usedUp,         // shown as often as the count
};

/// Whether an advertisement is shown for that reason.
bool isDue(ShowReason reason);

/// Decides whether an advertisement is due, and counts it if so: a showing is counted when it is
/// decided. What has no version is neither looked up nor counted.
ShowReason decideShow(const ShowTerms& terms, ShownState& shown);

}  // namespace qorix
