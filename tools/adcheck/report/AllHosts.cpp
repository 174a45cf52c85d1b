#include "tools/adcheck/report/AllHosts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>
#include <string_view>
#include <utility>

#include "definition/AdReader.h"
#include "definition/Json.h"
#include "tools/adcheck/report/Describe.h"
#include "tools/adcheck/report/JsonReport.h"
#include "tools/adcheck/report/Problems.h"
#include "tools/adcheck/scan/JsonMembers.h"
#include "tools/common/Placement.h"
#include "tools/common/Refusal.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

struct Mention {
  std::size_t offset = 0;
  std::string host;
};

void gatherFromTable(const SourceDocument& source, std::vector<Mention>& mentions) {
  for (const XmlElement data : source.document()->root().childrenNamed("data")) {
    for (const XmlElement line : data.childrenNamed("push_ad_config")) {
      if (const auto appid = line.firstChildNamed("appid")) {
        mentions.push_back({source.map().offsetOf(*appid), std::string(appid->text())});
      }
    }
  }
}

void gatherFromCustomisations(const SourceDocument& source, std::vector<Mention>& mentions) {
  for (const XmlElement ad : source.document()->root().childrenNamed("push_ad")) {
    const auto advance = ad.firstChildNamed(kFieldNames[field::advance]);
    if (!advance || !parseJson(advance->text())) {
      continue;
    }
    for (auto& member : membersAt(advance->text(), firstValueOf(advance->text()))) {
      mentions.push_back(
          {source.map().offsetInText(*advance, member.nameOffset), std::move(member.name)});
    }
  }
}

constexpr std::size_t kColumns = 6;
using Cells = std::array<std::string, kColumns>;

Cells cellsFor(const HostRow& row, const SourceDocument& source, const std::string& unnamed) {
  const std::string host = row.host ? printable(*row.host) : "(any other host)";
  if (row.run.record == nullptr) {
    const auto refusal = readForHost(source, row.host.value_or(unnamed)).refusal.value();
    const auto [line, column] = source.positionOf(refusal.offset);
    return {host, "refused, line " + std::to_string(refusal.line) + ": " + refusal.words + " (" +
                      std::to_string(line) + ":" + std::to_string(column) + ")"};
  }
  const MyPushAdInfo& info = *row.run.record;
  return {
      host,
      "adid " + std::to_string(info.adId()),
      placementOf(info),
      sizeText(static_cast<double>(info.width()), static_cast<double>(info.height())),
      (row.run.decision.isDue ? "yes, " : "no, ") + std::string(nameOf(row.run.decision.reason)),
      languagesOf(info.htmlContentsDict())};
}

std::string aligned(const std::vector<Cells>& rows) {
  std::array<std::size_t, kColumns> widths{};
  for (const Cells& cells : rows) {
    for (std::size_t column = 0; column < cells.size(); ++column) {
      widths.at(column) = std::max(widths.at(column), lengthOf(cells.at(column)));
    }
  }
  std::string text;
  for (const Cells& cells : rows) {
    std::string line;
    for (std::size_t column = 0; column < cells.size(); ++column) {
      const std::string& cell = cells.at(column);
      line += cell + std::string(widths.at(column) - lengthOf(cell) + 2, ' ');
    }
    text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

std::string warningLines(const SourceDocument& source, const std::string& name) {
  const auto warnings = problemsForAllHosts(source).warnings;
  std::string text = "\n";
  for (const Finding& finding : warnings) {
    text += placeInFile(name, source, finding.offset) + "warning: " + finding.words + "\n";
  }
  return text + warningCount(warnings.size());
}

}  // namespace

std::vector<std::string> hostsNamedIn(const SourceDocument& source) {
  std::vector<Mention> mentions;
  if (source.document() != nullptr) {
    gatherFromTable(source, mentions);
    gatherFromCustomisations(source, mentions);
  }
  std::ranges::stable_sort(mentions, {}, &Mention::offset);
  std::vector<std::string> hosts;
  std::set<std::string> seen;
  for (const Mention& mention : mentions) {
    if (!mention.host.empty() && seen.insert(mention.host).second) {
      hosts.push_back(mention.host);
    }
  }
  return hosts;
}

std::string unnamedHost(const std::vector<std::string>& named) {
  std::string host = "com.example.unnamed";
  while (std::ranges::find(named, host) != named.end()) {
    host += "x";
  }
  return host;
}

void runAllHosts(const std::string& document, const Options& options, const LogSink& log,
                 const RowSink& take) {
  const auto hosts = hostsNamedIn(SourceDocument(document));
  for (const auto& host : hosts) {
    take({host, runHost(document, host, options, log)});
  }
  take({std::nullopt, runHost(document, unnamedHost(hosts), options, log)});
}

AllHostsReport allHostsText(const std::string& document, const Options& options) {
  const SourceDocument source(document);
  const std::string unnamed = unnamedHost(hostsNamedIn(source));
  std::vector<Cells> lines = {{"host", "gets", "placement", "size", "due", "languages"}};
  AllHostsReport report;
  runAllHosts(
      document, options, [](std::string_view) {},
      [&](const HostRow& row) {
        lines.push_back(cellsFor(row, source, unnamed));
        report.isAnyRefused |= row.run.record == nullptr;
      });
  report.text = aligned(lines);
  if (options.isStrict) {
    report.text += warningLines(source, nameOfFile(options.file));
  }
  return report;
}

AllHostsReport allHostsJson(const std::string& document, const Options& options,
                            const LogSink& log) {
  Json array = Json::array();
  AllHostsReport report;
  runAllHosts(document, options, log, [&](const HostRow& row) {
    array.push_back({{"host", row.host ? Json(*row.host) : Json()}, {"record", toJson(row.run)}});
    report.isAnyRefused |= row.run.record == nullptr;
  });
  report.text = textOf(array);
  return report;
}

}  // namespace qorix::tools::adcheck
