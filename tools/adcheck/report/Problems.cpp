#include "tools/adcheck/report/Problems.h"

#include <algorithm>
#include <utility>

#include "tools/adcheck/report/AllHosts.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

class ProblemFinder {
 public:
  explicit ProblemFinder(const SourceDocument& source) : source_(source) {}

  /// Reads the document as the host `app`, which the problems call `name`.
  void read(const std::optional<std::string>& app, const std::optional<std::string>& name);
  Problems take();

 private:
  const SourceDocument& source_;
  Problems problems_;
};

/// Hosts that refuse it for the same reason are listed together.
void ProblemFinder::read(const std::optional<std::string>& app,
                         const std::optional<std::string>& name) {
  const auto refusal = readForHost(source_, app).refusal;
  if (!refusal) {
    return;
  }
  auto& known = problems_.refusals;
  const auto same = std::ranges::find_if(known, [&](const HostsRefusal& each) {
    return each.refusal.line == refusal->line && each.refusal.offset == refusal->offset;
  });
  if (same == known.end()) {
    known.push_back({*refusal, {name}});
  } else {
    same->hosts.push_back(name);
  }
}

Problems ProblemFinder::take() {
  problems_.warnings = findingsIn(source_);
  std::erase_if(problems_.warnings, [&](const Finding& finding) {
    return std::ranges::any_of(problems_.refusals, [&](const HostsRefusal& each) {
      return each.refusal.offset == finding.offset;
    });
  });
  return std::move(problems_);
}

}  // namespace

Problems problemsForHost(const SourceDocument& source, const std::optional<std::string>& app) {
  ProblemFinder finder(source);
  finder.read(app, app);
  return finder.take();
}

Problems problemsForAllHosts(const SourceDocument& source) {
  ProblemFinder finder(source);
  const auto hosts = hostsNamedIn(source);
  for (const auto& host : hosts) {
    finder.read(host, host);
  }
  finder.read(unnamedHost(hosts), std::nullopt);
  return finder.take();
}

std::string nameOfFile(const std::string& file) {
  return file == "-" ? "standard input" : printable(file);
}

std::string placeInFile(const std::string& name, const SourceDocument& source, std::size_t offset) {
  const auto [line, column] = source.positionOf(offset);
  return name + ":" + std::to_string(line) + ":" + std::to_string(column) + ": ";
}

std::string warningCount(std::size_t count) {
  return count == 0   ? "no warnings\n"
         : count == 1 ? "1 warning\n"
                      : std::to_string(count) + " warnings\n";
}

}  // namespace qorix::tools::adcheck
