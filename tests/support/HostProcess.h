#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/ChildProcess.h"

namespace qorix::test {

/// One run of the sample host.
class HostProcess : public ChildProcess {
 public:
  explicit HostProcess(std::vector<std::string> arguments);

  /// Waits for the first event of that name, also one that was printed before.
  std::optional<nlohmann::json> waitForEvent(std::string_view name, double seconds = kPatience);

  const std::vector<nlohmann::json>& events() const { return events_; }
  int countEvents(std::string_view name) const;

 protected:
  void takeLine(const std::string& line) override;

 private:
  std::vector<nlohmann::json> events_;
};

}  // namespace qorix::test
