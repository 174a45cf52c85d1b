#include "tools/adcheck/Options.h"

#include <limits>

#include <qorix/QORIXInfo.h>

#include "tools/common/CommandLine.h"

namespace qorix::tools::adcheck {

Options parseOptions(int argc, char** argv) {
  Options options;
  std::string formatName;
  bool isJson = false;
  CommandLine line("qorix-adcheck",
                   "Reads an ad configuration document as a host would and reports what that host "
                   "gets.\nThe scripts of pages are not run: qorix-preview does that.");
  line.add_option("FILE", options.file, "The document; - is standard input")
      ->required()
      ->type_name("");
  auto* app = line.addText("--app", options.app, "ID", "The host's bundle identifier (none)");
  line.addLanguages(options.languages,
                    "The user's languages, separated by commas, most preferred first (none)");
  line.addText("--applications", options.applications, "DIR",
               "The folder of the installed applications (an empty one)");
  line.addText("--stored-version", options.storedVersion, "TEXT",
               "The version that the machine has shown last (none)");
  using Count = std::numeric_limits<std::int64_t>;
  line.addNumber("--stored-count", options.storedCount, Count::min(), Count::max(), "N",
                 "How often it has shown that version (none)");
  constexpr int kLargestView = 100'000;
  line.addViewSize(options.viewSize.width, options.viewSize.height, kLargestView,
                   "The size of the host's view, for the report (800x600)");
  line.addSwitch("--all-hosts", options.allHosts,
                 "One row for each host that the document names, and one for all others")
      ->excludes(app);
  auto* format = line.addText("--format", formatName, "NAME",
                              "text, json (the record and the decision, the host's log on standard "
                              "error)\nor sarif (refusals and warnings, for code hosts) (text)");
  format->check(CLI::IsMember({"text", "json", "sarif"}).description(""));
  line.addSwitch("--json", isJson, "The same as --format json")->excludes(format);
  line.add_option("--public-key", options.publicKeys,
                  "Whose signature the hosts ask for, in base64; once for each key (none)")
      ->type_name("KEY")
      ->option_text("KEY")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  line.addSwitch("--strict", options.isStrict, "Exit with status 3 if there are warnings");
  line.set_version_flag(
      "--version",
      "qorix-adcheck (QORIX) " QORIX_ADCHECK_VERSION "\n" + QORIXInfo::frameworkInfoString(),
      "Print the version");
  line.footer(
      "Exit status: 0 a record, 1 the document is refused, 2 wrong usage, or FILE cannot be read,\n"
      "3 a record and warnings, with --strict.");
  line.parseOrExit(argc, argv);
  options.format = isJson || formatName == "json" ? Format::json
                   : formatName == "sarif"        ? Format::sarif
                                                  : Format::text;
  return options;
}

}  // namespace qorix::tools::adcheck
