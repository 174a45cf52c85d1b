#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tools/adcheck/HostRun.h"

namespace qorix::tools::adcheck {

using Json = nlohmann::ordered_json;

/// The record and the decision as one object; null when the document was refused.
Json toJson(const HostRun& run);

/// The text of a JSON report, with a line break at its end. Bytes that are not UTF-8 are replaced.
std::string textOf(const Json& json);

}  // namespace qorix::tools::adcheck
