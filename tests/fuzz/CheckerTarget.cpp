#include <utf8.h>

#include "fuzz/Escaped.h"
#include "fuzz/Expect.h"
#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "support/Documents.h"
#include "text/HiddenCharacters.h"
#include "tools/adcheck/Options.h"
#include "tools/adcheck/findings/Findings.h"
#include "tools/adcheck/report/AllHosts.h"
#include "tools/adcheck/report/JsonReport.h"
#include "tools/adcheck/report/Problems.h"
#include "tools/adcheck/report/SarifReport.h"
#include "tools/adcheck/report/TextReport.h"
#include "tools/adcheck/scan/HtmlPage.h"

namespace qorix::fuzz {

namespace {

using tools::SourceDocument;
using tools::adcheck::allHostsJson;
using tools::adcheck::allHostsText;
using tools::adcheck::Finding;
using tools::adcheck::Findings;
using tools::adcheck::findInPage;
using tools::adcheck::HtmlPage;
using tools::adcheck::Json;
using tools::adcheck::Options;
using tools::adcheck::Problems;
using tools::adcheck::problemsForAllHosts;
using tools::adcheck::problemsForHost;
using tools::adcheck::reportText;
using tools::adcheck::runHost;
using tools::adcheck::sarifText;
using tools::adcheck::textOf;
using tools::adcheck::TextReport;
using tools::adcheck::toJson;

void expectPlain(std::string_view report) {
  while (!report.empty()) {
    const auto [size, isHidden] = leadingCharacter(report);
    expect(!isHidden || report.front() == '\n', "a report commands no terminal");
    report.remove_prefix(size);
  }
}

void expectJson(const std::string& report) {
  expect(utf8::is_valid(report) && Json::accept(report), "a report is JSON");
}

}  // namespace

void page(std::string_view bytes) {
  const std::string text = element("default", escaped(bytes));
  const SourceDocument source(text);
  if (source.document() == nullptr) {
    return;  // no document holds such bytes
  }
  Findings findings(source);
  findInPage(source.document()->root(), findings);
  for (const Finding& finding : findings.take()) {
    expect(finding.offset < text.size(), "a finding has its place in the page");
    expect(!finding.words.empty() && utf8::is_valid(finding.words), "a finding is told");
  }
  HtmlPage(source.document()->root().text()).holdsScript();
}

void checker(std::string_view bytes) {
  const unsigned choice = takeByte(bytes);
  const std::string document(bytes);
  Options options;
  options.file = "ads.xml";
  options.isStrict = choice % 2 == 1;
  options.languages = {"de-AT", "en"};
  options.app = choice % 4 < 2 ? std::optional<std::string>("com.example.editor") : std::nullopt;
  switch (choice / 4 % 5) {
    case 0: {
      const TextReport report = reportText(document, options, false);
      expectPlain(report.text);
      expect(report.isRefused ==
                 (runHost(document, options.app, options, [](auto) {}).record == nullptr),
             "a report refuses what a host refuses");
      break;
    }
    case 1:
      expectJson(textOf(toJson(runHost(document, options.app, options, [](auto) {}))));
      break;
    case 2:
      expectPlain(allHostsText(document, options).text);
      break;
    case 3:
      expectJson(allHostsJson(document, options, [](auto) {}).text);
      break;
    default: {
      const SourceDocument source(document);
      const Problems problems =
          options.app ? problemsForHost(source, options.app) : problemsForAllHosts(source);
      for (const Finding& warning : problems.warnings) {
        expect(warning.offset <= document.size(), "a warning has its place in the document");
      }
      expectJson(sarifText(problems, source, options, 0));
    }
  }
}

}  // namespace qorix::fuzz
