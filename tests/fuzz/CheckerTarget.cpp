#include <utf8.h>

#include "fuzz/Expect.h"
#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "text/HiddenCharacters.h"
#include "tools/adcheck/Options.h"
#include "tools/adcheck/report/AllHosts.h"
#include "tools/adcheck/report/JsonReport.h"
#include "tools/adcheck/report/Problems.h"
#include "tools/adcheck/report/SarifReport.h"
#include "tools/adcheck/report/TextReport.h"

namespace qorix::fuzz {

namespace {

using namespace tools;
using namespace tools::adcheck;

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

void checker(std::string_view bytes) {
  const unsigned choice = takeByte(bytes);
  const std::string document(bytes);
  Options options;
  options.file = "ads.xml";
  options.isStrict = choice % 2 == 1;
  options.languages = {"de-AT", "en"};
  options.app = choice % 4 < 2 ? std::optional<std::string>("com.example.editor") : std::nullopt;
  switch (choice / 4 % 5) {
    case 0:
      expectPlain(reportText(document, options, false).text);
      break;
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
      expectJson(sarifText(problems, source, options, 0));
    }
  }
}

}  // namespace qorix::fuzz
