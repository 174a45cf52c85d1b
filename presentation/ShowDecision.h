#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qorix {

/// What an advertisement says about its showings.
struct ShowTerms {
  bool enable = false;
  std::optional<std::string> version;
  std::int64_t count = 0;
};

/// What this machine remembers of earlier showings.
struct ShownState {
  std::optional<std::string> version;
  std::int64_t count = 0;
};

enum class ShowReason {
  disabled,       // switched off
  dueUncounted,   // has no version: due every time
  dueFirst,       // nothing was ever shown on this machine; granted whatever the count
  dueNewVersion,  // another version than the last one shown; counted from 0
  dueCounted,     // shown before, fewer times than the count
  usedUp,         // shown as often as the count
};

/// One durable change of what the machine remembers.
struct ShownStateChange {
  std::optional<std::string> version;  // left as it is when absent
  std::int64_t count = 0;
};

struct ShowDecision {
  ShowReason reason = ShowReason::disabled;
  /// In this order, each to be made durable before the next. A showing is counted when it is
  /// decided.
  std::vector<ShownStateChange> changes;

  bool isDue() const { return reason != ShowReason::disabled && reason != ShowReason::usedUp; }
};

/// Whether the showings of an advertisement on these terms depend on what the machine remembers.
bool isCounted(const ShowTerms& terms);

/// Decides whether an advertisement is due. `stored` is looked at only when `isCounted`.
ShowDecision decideShow(const ShowTerms& terms, const ShownState& stored);

}  // namespace qorix
