#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <qorix/MyPushAdInfo.h>
#include <qorix/platform/Platform.h>

#include "presentation/ShowDecision.h"
#include "tools/adcheck/Options.h"

namespace qorix::adcheck {

/// Why a record is shown or not; what is seen of a showing counts, too.
enum class DecisionReason {
  disabled,
  usedUp,
  parked,
  nothingToShow,
  dueFirst,
  dueNewVersion,
  dueCounted,
  dueUncounted,
};

/// As in the reports: "due-first".
std::string_view nameOf(DecisionReason reason);

/// What becomes of a record on a machine with that state.
struct Decision {
  /// Whether a showing is spent, also when nothing is seen of it.
  bool isDue = false;
  DecisionReason reason = DecisionReason::disabled;
  std::optional<std::string> storedVersion;
  std::int64_t storedCount = 0;
};

/// What a host makes of a document, from reading it to the page that it shows.
struct HostRun {
  std::shared_ptr<const MyPushAdInfo> record;  // null when the document is refused
  std::optional<std::string> title;
  std::optional<std::string> page;
  Decision decision;
};

/// Decides as a presenter would, with the settings in force, and spends the showing there.
Decision decide(const MyPushAdInfo& info);

/// Takes the lines that a host logs, without line breaks at their end.
using LogSink = std::function<void(std::string_view)>;

/// Does what the host `app` does with `document`, by the library's own code, on a machine as the
/// options describe it. Each run is the first of a new process: installs a platform of its own.
HostRun runHost(const std::string& document, const std::optional<std::string>& app,
                const Options& options, LogSink log);

}  // namespace qorix::adcheck
