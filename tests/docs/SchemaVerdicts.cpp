#include <unistd.h>

#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "tools/adcheck/findings/Findings.h"
#include "tools/adcheck/report/AllHosts.h"
#include "tools/common/Refusal.h"
#include "tools/common/SourceDocument.h"
#include "tools/common/Streams.h"

// Says of each document on standard input what the library's reader and the checker say of it, for
// schema_test.py. A NUL follows each document; one line of JSON is printed for each. With --rules,
// prints the names of all that it may say.

namespace {

namespace adcheck = qorix::tools::adcheck;
using qorix::tools::readForHost;
using qorix::tools::SourceDocument;

nlohmann::json verdictOn(std::string_view document) {
  const SourceDocument source(document);
  auto hosts = adcheck::hostsNamedIn(source);
  hosts.push_back(adcheck::unnamedHost(hosts));
  nlohmann::json verdict = {{"refusals", nlohmann::json::array()},
                            {"warnings", nlohmann::json::array()}};
  for (const auto& host : hosts) {
    if (const auto refusal = readForHost(source, host).refusal) {
      verdict["refusals"].push_back("refused-" + std::to_string(refusal->line));
    }
  }
  for (const auto& finding : adcheck::findingsIn(source)) {
    verdict["warnings"].push_back({adcheck::textOf(finding.rule).id, finding.words});
  }
  return verdict;
}

void printRules() {
  for (const auto& rule : adcheck::refusalRules()) {
    std::cout << rule.id << "\n";
  }
  for (const auto& rule : adcheck::allRules()) {
    std::cout << rule.id << "\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::string_view(argv[1]) == "--rules") {
    printRules();
    return 0;
  }
  const auto documents = qorix::tools::readAll(STDIN_FILENO);
  if (!documents) {
    return 1;
  }
  std::string_view rest = *documents;
  for (auto end = rest.find('\0'); end != rest.npos; end = rest.find('\0')) {
    using Json = nlohmann::json;
    std::cout << verdictOn(rest.substr(0, end)).dump(-1, ' ', true, Json::error_handler_t::replace)
              << "\n";
    rest.remove_prefix(end + 1);
  }
  return 0;
}
