#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace qorix {

using Setting = std::variant<std::int64_t, std::string, std::vector<std::string>>;
using Settings = std::map<std::string, Setting>;
using SettingChanges = std::map<std::string, std::optional<Setting>>;  // absent: removed

}  // namespace qorix
