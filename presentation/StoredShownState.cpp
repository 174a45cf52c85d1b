#include "presentation/StoredShownState.h"

#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

namespace qorix {

std::optional<std::string> StoredShownState::version() {
  return defaults_.stringForKey(kShownVersionKey);
}

std::int64_t StoredShownState::count() { return defaults_.integerForKey(kShownCountKey); }

void StoredShownState::restart(const std::string& version, std::int64_t count) {
  defaults_.setString(version, kShownVersionKey);
  setCount(count);
}

void StoredShownState::setCount(std::int64_t count) {
  defaults_.setInteger(count, kShownCountKey);
  defaults_.synchronize();
}

ShowReason decideAndCount(const MyPushAdInfo& info) {
  StoredShownState shown(*platform().standardUserDefaults);
  const ShowReason reason = decideShow({info.enable(), info.version(), info.count()}, shown);
  if (reason == ShowReason::disabled) {
    logLine("ZAM Disabled.");
  }
  return reason;
}

}  // namespace qorix
