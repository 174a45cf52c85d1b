#include "tools/preview/Options.h"

#include <getopt.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "text/TextLists.h"

namespace {

constexpr const char* kUsage =
    R"(usage: qorix-preview [OPTION]... FILE

Shows the advertisement of the ad configuration document FILE in a window, as a host would, and
prints what happens. Shows it anew whenever FILE changes. Nothing is counted or stored.

  --app ID            be the host of this bundle identifier (one that no table line names)
  --languages LIST    the user's languages, separated by commas (the user's own)
  --applications DIR  folder of the installed applications (none is installed)
  --view-size WxH     size of the host's view at first (800x600)
  --anyway            show also what a host would not show, or not yet
  --open              really open links; without it their addresses are only printed
  --screenshot FILE   save a picture of the window with the advertisement, a PNG, and quit; works
                      without a display, too
  --quit-after S      quit after S seconds
  --help              print this
  --version           print the version
)";

[[noreturn]] void refuse(const std::string& why) {
  std::fprintf(stderr, "qorix-preview: %s\nTry --help.\n", why.c_str());
  std::exit(2);
}

// The whole text as a number from `least` to `most`.
template <class Number>
Number parseNumber(const char* option, std::string_view text, Number least, Number most) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || !(number >= least && number <= most)) {
    refuse(std::string(option) + " cannot be '" + std::string(text) + "'");
  }
  return number;
}

void parseViewSize(Options& options, std::string_view text) {
  const auto cross = text.find('x');
  if (cross == std::string_view::npos) {
    refuse("--view-size needs a width and a height, as in 800x600");
  }
  options.viewWidth = parseNumber("--view-size", text.substr(0, cross), 1, 10000);
  options.viewHeight = parseNumber("--view-size", text.substr(cross + 1), 1, 10000);
}

std::vector<std::string> parseLanguages(std::string_view text) {
  auto languages = qorix::splitAtCommas(text);
  if (languages.empty()) {
    refuse("--languages needs a language, as in de-DE,en-US");
  }
  return languages;
}

std::string nonEmpty(const char* option, const char* text) {
  if (*text == '\0') {
    refuse(std::string(option) + " cannot be empty");
  }
  return text;
}

[[noreturn]] void printAndQuit(const char* text) {
  std::fputs(text, stdout);
  std::exit(0);
}

namespace choice {
enum : int {
  app = 1,
  languages,
  applications,
  viewSize,
  anyway,
  open,
  screenshot,
  quitAfter,
  help,
  version,
};
}

constexpr option kOptions[] = {
    {"app", required_argument, nullptr, choice::app},
    {"languages", required_argument, nullptr, choice::languages},
    {"applications", required_argument, nullptr, choice::applications},
    {"view-size", required_argument, nullptr, choice::viewSize},
    {"anyway", no_argument, nullptr, choice::anyway},
    {"open", no_argument, nullptr, choice::open},
    {"screenshot", required_argument, nullptr, choice::screenshot},
    {"quit-after", required_argument, nullptr, choice::quitAfter},
    {"help", no_argument, nullptr, choice::help},
    {"version", no_argument, nullptr, choice::version},
    {},
};

void take(Options& options, int chosen) {
  switch (chosen) {
    case choice::app:
      options.app = nonEmpty("--app", optarg);
      break;
    case choice::languages:
      options.languages = parseLanguages(optarg);
      break;
    case choice::applications:
      options.applications = nonEmpty("--applications", optarg);
      break;
    case choice::viewSize:
      parseViewSize(options, optarg);
      break;
    case choice::anyway:
      options.anyway = true;
      break;
    case choice::open:
      options.open = true;
      break;
    case choice::screenshot:
      options.screenshot = nonEmpty("--screenshot", optarg);
      break;
    case choice::quitAfter:
      options.quitAfter = parseNumber("--quit-after", optarg, 0.0, 1e6);
      break;
    case choice::help:
      printAndQuit(kUsage);
    case choice::version:
      printAndQuit("qorix-preview (QORIX) " QORIX_PREVIEW_VERSION "\n");
    default:  // getopt_long has said what is wrong
      std::fputs("Try --help.\n", stderr);
      std::exit(2);
  }
}

}  // namespace

Options parseOptions(int argc, char** argv) {
  Options options;
  for (int chosen = 0; (chosen = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    take(options, chosen);
  }
  if (argc - optind != 1) {
    refuse(optind == argc ? "which FILE is to be shown?" : "only one FILE can be shown");
  }
  options.file = nonEmpty("FILE", argv[optind]);
  return options;
}
