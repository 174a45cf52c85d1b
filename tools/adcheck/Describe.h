#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <qorix/MyPushAdInfo.h>
#include <qorix/platform/Geometry.h>

#include "tools/adcheck/HostRun.h"

namespace qorix::adcheck {

// Parts of a run in plain words, for both reports.

/// "once", "3 times".
std::string times(std::int64_t count);

/// "banner, top right", "pop-up" or "nothing".
std::string placementOf(const MyPushAdInfo& info);

/// Where the advertisement lies in a host view of that size.
std::string frameOf(const MyPushAdInfo& info, const Size& view);

/// Whether it is due and why, given the state before the decision.
std::string decisionOf(const HostRun& run, const Options& options);

/// The codes of a dictionary, separated by commas.
std::string languagesOf(const std::optional<LocalizedTexts>& texts);

}  // namespace qorix::adcheck
