#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/adcheck/findings/Findings.h"
#include "tools/common/Refusal.h"
#include "tools/common/SourceDocument.h"

namespace qorix::tools::adcheck {

/// Why hosts refuse a document, and who they are; without a name, hosts that are not named.
struct HostsRefusal {
  Refusal refusal;
  std::vector<std::optional<std::string>> hosts;
};

/// What is wrong with a document.
struct Problems {
  std::vector<HostsRefusal> refusals;
  std::vector<Finding> warnings;  // those that say what a refusal says are left out
};

/// What is wrong for the host `app`.
Problems problemsForHost(const SourceDocument& source, const std::optional<std::string>& app);

/// What is wrong for any host.
Problems problemsForAllHosts(const SourceDocument& source);

/// How reports call the file: printable, in one line.
std::string nameOfFile(const std::string& file);

/// "name:line:column: ", as compilers begin a message.
std::string placeInFile(const std::string& name, const SourceDocument& source, std::size_t offset);

/// "no warnings", "1 warning", "2 warnings" and a line break.
std::string warningCount(std::size_t count);

}  // namespace qorix::tools::adcheck
