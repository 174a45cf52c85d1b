#include "presentation/StoredShownState.h"

#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "platform/Guarded.h"

namespace qorix {

std::optional<std::string> StoredShownState::version() {
  return defaults_.stringForKey(kShownVersionKey);
}

std::int64_t StoredShownState::count() { return defaults_.integerForKey(kShownCountKey); }

void StoredShownState::restart(const std::string& version, std::int64_t count) {
  defaults_.setString(version, kShownVersionKey);
  try {
    setCount(count);
  } catch (...) {  // the version must not stand beside another one's count
    defaults_.removeObjectForKey(kShownVersionKey);
    throw;
  }
}

void StoredShownState::setCount(std::int64_t count) {
  defaults_.setInteger(count, kShownCountKey);
  callGuarded([this] { defaults_.synchronize(); });  // it counts all the same
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
