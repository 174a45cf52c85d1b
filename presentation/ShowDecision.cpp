#include "presentation/ShowDecision.h"

#include "presentation/VersionRule.h"

namespace qorix {

namespace {

bool isAbsentOrEmpty(const std::optional<std::string>& text) { return !text || text->empty(); }

}  // namespace

bool isDue(ShowReason reason) {
  return reason != ShowReason::disabled && reason != ShowReason::usedUp;
}

ShowReason decideShow(const ShowTerms& terms, ShownState& shown) {
  if (!terms.enable) {
    return ShowReason::disabled;
  }
  if (isAbsentOrEmpty(terms.version)) {
    return ShowReason::dueUncounted;
  }
  const auto shownVersion = shown.version();
  if (isAbsentOrEmpty(shownVersion)) {
    shown.restart(*terms.version, 1);
    return ShowReason::dueFirst;
  }
  const bool isSameVersion = isSameAdVersion(*shownVersion, *terms.version);
  if (!isSameVersion) {
    shown.restart(*terms.version, 0);
  }
  const std::int64_t count = shown.count();
  if (count >= terms.count) {
    return ShowReason::usedUp;
  }
  shown.setCount(count + 1);
  return isSameVersion ? ShowReason::dueCounted : ShowReason::dueNewVersion;
}

}  // namespace qorix
