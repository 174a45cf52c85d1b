#pragma once

#include <string>

#include "tools/adcheck/Options.h"
#include "tools/adcheck/report/Problems.h"

namespace qorix::tools::adcheck {

/// The problems as a log of SARIF 2.1.0, the format that code hosts show beside the lines of a
/// change. `exitStatus` is what the program is going to return.
std::string sarifText(const Problems& problems, const SourceDocument& source,
                      const Options& options, int exitStatus);

}  // namespace qorix::tools::adcheck
