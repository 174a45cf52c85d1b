#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/adcheck/HostRun.h"
#include "tools/common/SourceDocument.h"

namespace qorix::tools::adcheck {

/// What one host gets; without a name, any host that the document does not name.
struct HostRow {
  std::optional<std::string> host;
  HostRun run;
};

/// The hosts that the document names in its table and its customisations, in the order of their
/// first appearance.
std::vector<std::string> hostsNamedIn(const SourceDocument& source);

/// An identifier that is none of those.
std::string unnamedHost(const std::vector<std::string>& named);

using RowSink = std::function<void(const HostRow&)>;

/// Runs each of those hosts, and one that is not among them, last. Rows are large: none is kept.
void runAllHosts(const std::string& document, const Options& options, const LogSink& log,
                 const RowSink& take);

struct AllHostsReport {
  std::string text;
  bool isAnyRefused = false;
};

/// A table for people, one row per host. Where warnings count, they follow it.
AllHostsReport allHostsText(const std::string& document, const Options& options);

/// The same as a JSON array. `log` gets what the hosts log, one after the other.
AllHostsReport allHostsJson(const std::string& document, const Options& options,
                            const LogSink& log);

}  // namespace qorix::tools::adcheck
