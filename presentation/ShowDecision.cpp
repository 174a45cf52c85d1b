#include "presentation/ShowDecision.h"

#include "presentation/VersionRule.h"

namespace qorix {

namespace {

bool isAbsentOrEmpty(const std::optional<std::string>& text) { return !text || text->empty(); }

}  // namespace

bool isCounted(const ShowTerms& terms) { return terms.enable && !isAbsentOrEmpty(terms.version); }

ShowDecision decideShow(const ShowTerms& terms, const ShownState& stored) {
  if (!terms.enable) {
    return {ShowReason::disabled, {}};
  }
  if (!isCounted(terms)) {
    return {ShowReason::dueUncounted, {}};
  }
  if (isAbsentOrEmpty(stored.version)) {
    return {ShowReason::dueFirst, {{terms.version, 1}}};
  }
  ShowDecision decision{ShowReason::dueCounted, {}};
  std::int64_t shown = stored.count;
  if (!isSameAdVersion(*stored.version, *terms.version)) {
    decision.reason = ShowReason::dueNewVersion;
    decision.changes.push_back({terms.version, 0});
    shown = 0;
  }
  if (shown >= terms.count) {
    decision.reason = ShowReason::usedUp;
  } else {
    decision.changes.push_back({std::nullopt, shown + 1});
  }
  return decision;
}

}  // namespace qorix
