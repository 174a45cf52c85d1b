#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <qorix/MyPushAdInfo.h>
#include <qorix/platform/UserDefaults.h>

#include "presentation/ShowDecision.h"

namespace qorix {

/// Where the host's settings keep the version that was last shown, and how often it was.
inline constexpr const char* kShownVersionKey = "ZAMMyPushAdVersionKey";
inline constexpr const char* kShownCountKey = "ZAMMyPushAdCountKey";

/// What the host's settings remember: one pair for all of its views, read with one look as long as
/// the object lives. Main thread.
class StoredShownState : public ShownState {
 public:
  explicit StoredShownState(UserDefaults& defaults) : defaults_(defaults) {
    defaults_.beginDecision();
  }
  StoredShownState(const StoredShownState&) = delete;
  StoredShownState& operator=(const StoredShownState&) = delete;
  ~StoredShownState() override { defaults_.endDecision(); }

  std::optional<std::string> version() override;
  std::int64_t count() override;
  void restart(const std::string& version, std::int64_t count) override;
  void setCount(std::int64_t count) override;

 private:
  UserDefaults& defaults_;
};

/// Decides with the host's settings whether `info` is due, and counts the showing if so. Logs when
/// the advertisement is switched off. Main thread.
ShowReason decideAndCount(const MyPushAdInfo& info);

}  // namespace qorix
