#include "support/HostProcess.h"

#include <algorithm>
#include <utility>

namespace qorix::test {

namespace {

std::vector<std::string> command(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), QORIX_SAMPLE_HOST);
  return arguments;
}

}  // namespace

HostProcess::HostProcess(std::vector<std::string> arguments)
    : ChildProcess(command(std::move(arguments))) {}

std::optional<nlohmann::json> HostProcess::waitForEvent(std::string_view name, double seconds) {
  const auto isIt = [name](const nlohmann::json& event) { return event.at("event") == name; };
  if (!waitFor([&] { return std::ranges::any_of(events_, isIt); }, seconds)) {
    return std::nullopt;
  }
  return *std::ranges::find_if(events_, isIt);
}

int HostProcess::countEvents(std::string_view name) const {
  return static_cast<int>(std::ranges::count_if(
      events_, [name](const nlohmann::json& event) { return event.at("event") == name; }));
}

void HostProcess::takeLine(const std::string& line) {
  auto event = nlohmann::json::parse(line, nullptr, false);
  events_.push_back(event.is_object() ? std::move(event)
                                      : nlohmann::json{{"event", "not JSON: " + line}});
}

}  // namespace qorix::test
