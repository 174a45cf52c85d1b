#include "tools/adcheck/report/SarifReport.h"

#include <uriparser/Uri.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "text/AsciiCase.h"
#include "tools/adcheck/findings/Rules.h"
#include "tools/adcheck/report/JsonReport.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

/// "table-adid-unknown" becomes "TableAdidUnknown".
std::string ruleName(std::string_view id) {
  std::string name;
  bool isStart = true;
  for (const char c : id) {
    if (c != '-') {
      name += isStart ? asciiUpper(c) : c;
    }
    isStart = c == '-';
  }
  return name;
}

Json ruleOf(std::string_view id, std::string_view name, std::string_view summary,
            const std::string& help, std::string_view level) {
  return {{"id", id},
          {"name", name},
          {"shortDescription", {{"text", std::string(summary) + "."}}},
          {"help", {{"text", help}}},
          {"defaultConfiguration", {{"level", level}}}};
}

/// The refusals first, then the warnings: `ruleIndex` relies on it.
Json rules() {
  Json list = Json::array();
  for (const RefusalRule& rule : refusalRules()) {
    list.push_back(
        ruleOf(rule.id, rule.name, rule.summary,
               "Hosts refuse the whole document and log line " + std::to_string(rule.line) + ".",
               "error"));
  }
  for (const RuleText& rule : allRules()) {
    list.push_back(
        ruleOf(rule.id, ruleName(rule.id), rule.summary, std::string(rule.help), "warning"));
  }
  return list;
}

/// A relative name stays relative and loses its "./", so that a code host finds the file in its
/// repository.
std::string uriOf(const std::string& file) {
  constexpr std::size_t kSchemeSize = 8;   // "file://" and the end of the text
  constexpr std::size_t kEncodedSize = 3;  // "%20"
  const std::string name = std::filesystem::path(file).lexically_normal().string();
  std::string uri(kSchemeSize + kEncodedSize * name.size(), '\0');
  if (uriUnixFilenameToUriStringA(name.c_str(), uri.data()) != URI_SUCCESS) {
    return {};
  }
  uri.resize(uri.find('\0'));
  return uri;
}

/// Standard input has no address, so it is only described.
Json artifactOf(const Options& options) {
  Json artifact = Json::object();
  if (options.file == "-") {
    artifact["description"] = {{"text", nameOfFile(options.file)}};
  } else {
    artifact["location"] = {{"uri", uriOf(options.file)}};
  }
  artifact["roles"] = {"analysisTarget"};
  artifact["encoding"] = "UTF-8";
  artifact["sourceLanguage"] = "xml";
  return artifact;
}

class SarifWriter {
 public:
  SarifWriter(const SourceDocument& source, const Options& options)
      : source_(source), options_(options) {}

  Json results(const Problems& problems) const;

 private:
  Json resultOf(std::size_t ruleIndex, std::string_view id, std::string_view level,
                const std::string& words, std::size_t offset) const;
  Json resultOf(const HostsRefusal& each) const;
  std::string hostsText(const HostsRefusal& each) const;

  const SourceDocument& source_;
  const Options& options_;
};

Json SarifWriter::resultOf(std::size_t ruleIndex, std::string_view id, std::string_view level,
                           const std::string& words, std::size_t offset) const {
  const auto [line, column] = source_.positionOf(offset);
  Json artifact = {{"index", 0}};
  if (options_.file != "-") {
    artifact["uri"] = uriOf(options_.file);
  }
  const Json place = {{"physicalLocation",
                       {{"artifactLocation", artifact},
                        {"region", {{"startLine", line}, {"startColumn", column}}}}}};
  return {{"ruleId", id},
          {"ruleIndex", ruleIndex},
          {"level", level},
          {"message", {{"text", words}}},
          {"locations", Json::array({place})}};
}

std::string SarifWriter::hostsText(const HostsRefusal& each) const {
  std::string list;
  for (const auto& host : each.hosts) {
    list += list.empty() ? "" : ", ";
    list += host                ? inQuotes(*host)
            : options_.allHosts ? "any other host"
                                : "a host without identifier";
  }
  return list;
}

Json SarifWriter::resultOf(const HostsRefusal& each) const {
  const auto& [number, offset, words] = each.refusal;
  const auto& known = refusalRules();
  const auto rule = std::ranges::find(known, number, &RefusalRule::line);
  return resultOf(static_cast<std::size_t>(rule - known.begin()), rule->id, "error",
                  words + ": refused by " + hostsText(each), offset);
}

Json SarifWriter::results(const Problems& problems) const {
  Json list = Json::array();
  for (const HostsRefusal& each : problems.refusals) {
    list.push_back(resultOf(each));
  }
  for (const auto& [rule, offset, words] : problems.warnings) {
    list.push_back(resultOf(refusalRules().size() + static_cast<std::size_t>(rule), textOf(rule).id,
                            "warning", words, offset));
  }
  return list;
}

Json toolComponent() {
  return {{"name", "qorix-adcheck"}, {"version", QORIX_ADCHECK_VERSION}, {"rules", rules()}};
}

}  // namespace

std::string sarifText(const Problems& problems, const SourceDocument& source,
                      const Options& options, int exitStatus) {
  const Json invocation = {{"executionSuccessful", true}, {"exitCode", exitStatus}};
  const Json run = {{"tool", {{"driver", toolComponent()}}},
                    {"invocations", Json::array({invocation})},
                    {"columnKind", "unicodeCodePoints"},
                    {"newlineSequences", {"\r\n", "\n", "\r"}},
                    {"artifacts", Json::array({artifactOf(options)})},
                    {"results", SarifWriter(source, options).results(problems)}};
  return textOf(Json{{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
                     {"version", "2.1.0"},
                     {"runs", Json::array({run})}});
}

}  // namespace qorix::tools::adcheck
