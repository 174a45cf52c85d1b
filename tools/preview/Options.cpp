#include "tools/preview/Options.h"

#include "tools/common/CommandLine.h"

namespace qorix::tools::preview {

Options parseOptions(int argc, char** argv) {
  const CLI::Validator notEmpty(
      [](const std::string& value) { return value.empty() ? "cannot be empty" : ""; }, "");
  Options options;
  CommandLine line(
      "qorix-preview",
      "Shows the advertisement of the ad configuration document FILE in a window, as a "
      "host would, and\nprints what happens. Shows it anew whenever FILE changes. "
      "Nothing is counted or stored.");
  line.add_option("FILE", options.file, "The document")->required()->type_name("")->check(notEmpty);
  line.addText("--app", options.app, "ID",
               "Be the host of this bundle identifier (one that no table line names)")
      ->check(notEmpty);
  line.addLanguages(options.languages, "The user's languages, separated by commas (the user's own)")
      ->check(CLI::Validator(
          [](const std::string& value) {
            return value.find_first_not_of(", ") == value.npos ? "needs a language" : "";
          },
          ""));
  line.addText("--applications", options.applications, "DIR",
               "The folder of the installed applications (none is installed)")
      ->check(notEmpty);
  constexpr int kLargestView = 10'000;
  line.addViewSize(options.viewWidth, options.viewHeight, kLargestView,
                   "The size of the host's view at first (800x600)");
  line.addSwitch("--anyway", options.anyway, "Show also what a host would not show, or not yet");
  line.addSwitch("--open", options.open,
                 "Really open links; without it their addresses are only printed");
  line.addText(
          "--screenshot", options.screenshot, "FILE",
          "Save a picture of the window with the advertisement, a PNG, and quit; works without "
          "a display")
      ->check(notEmpty);
  constexpr double kLongest = 1e6;
  line.addNumber("--quit-after", options.quitAfter, 0.0, kLongest, "S", "Quit after S seconds");
  line.set_version_flag("--version", "qorix-preview (QORIX) " QORIX_PREVIEW_VERSION,
                        "Print the version");
  line.parseOrExit(argc, argv);
  return options;
}

}  // namespace qorix::tools::preview
