#include "tools/adcheck/Options.h"

#include <getopt.h>

#include <array>
#include <charconv>
#include <string_view>
#include <system_error>

#include "text/TextLists.h"

namespace qorix::adcheck {

namespace {

enum Option : int {
  kApp = 1,
  kLanguages,
  kApplications,
  kStoredVersion,
  kStoredCount,
  kViewSize,
  kAllHosts,
  kJson,
  kHelp,
  kVersion,
};

constexpr std::array kOptions = {
    option{"app", required_argument, nullptr, kApp},
    option{"languages", required_argument, nullptr, kLanguages},
    option{"applications", required_argument, nullptr, kApplications},
    option{"stored-version", required_argument, nullptr, kStoredVersion},
    option{"stored-count", required_argument, nullptr, kStoredCount},
    option{"view-size", required_argument, nullptr, kViewSize},
    option{"all-hosts", no_argument, nullptr, kAllHosts},
    option{"json", no_argument, nullptr, kJson},
    option{"help", no_argument, nullptr, kHelp},
    option{"version", no_argument, nullptr, kVersion},
    option{nullptr, 0, nullptr, 0},
};

/// The whole text as an integer.
template <class Integer>
std::optional<Integer> integerIn(std::string_view text) {
  Integer value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

std::optional<Size> sizeIn(std::string_view text) {
  constexpr int kLargest = 100'000;
  const auto cross = text.find('x');
  const auto width = integerIn<int>(text.substr(0, cross));
  const auto height = cross == text.npos ? std::nullopt : integerIn<int>(text.substr(cross + 1));
  const auto isSound = [](std::optional<int> side) {
    return side && *side > 0 && *side <= kLargest;
  };
  return isSound(width) && isSound(height)
             ? std::optional(Size{static_cast<double>(*width), static_cast<double>(*height)})
             : std::nullopt;
}

/// Takes one option over; the message when its value is wrong.
std::optional<std::string> take(int which, const char* value, Options& options) {
  switch (which) {
    case kApp:
      options.app = value;
      break;
    case kLanguages:
      options.languages = splitAtCommas(value);
      break;
    case kApplications:
      options.applications = value;
      break;
    case kStoredVersion:
      options.storedVersion = value;
      break;
    case kStoredCount:
      options.storedCount = integerIn<std::int64_t>(value);
      if (!options.storedCount) {
        return std::string("--stored-count cannot be '") + value + "'";
      }
      break;
    case kViewSize:
      if (const auto size = sizeIn(value)) {
        options.viewSize = *size;
        break;
      }
      return std::string("--view-size cannot be '") + value + "', but for instance 800x600";
    case kAllHosts:
      options.allHosts = true;
      break;
    case kJson:
      options.json = true;
      break;
    case kHelp:
      options.help = true;
      break;
    default:
      options.version = true;
      break;
  }
  return std::nullopt;
}

/// Scans with an option table that answers ':' for a missing value and '?' for anything unknown.
std::optional<std::string> scan(int argc, char** argv, Options& options) {
  opterr = 0;
  optind = 0;  // from the beginning, whatever was scanned before
  for (;;) {
    const int argument = optind == 0 ? 1 : optind;
    const int which = getopt_long(argc, argv, ":", kOptions.data(), nullptr);
    if (which == -1) {
      return std::nullopt;
    }
    if (which == '?' || which == ':') {
      const char* name = argv[optind > argument ? optind - 1 : argument];
      return std::string(which == ':' ? "a value is missing behind '" : "unknown option '") + name +
             "'";
    }
    if (auto wrong = take(which, optarg, options)) {
      return wrong;
    }
  }
}

}  // namespace

std::variant<Options, UsageError> parseOptions(int argc, char** argv) {
  Options options;
  if (const auto wrong = scan(argc, argv, options)) {
    return UsageError{*wrong};
  }
  if (options.help || options.version) {
    return options;
  }
  if (argc - optind != 1) {
    return UsageError{argc == optind ? "no FILE is given" : "more than one FILE is given"};
  }
  if (options.allHosts && options.app) {
    return UsageError{"--all-hosts takes the hosts from the document, not from --app"};
  }
  options.file = argv[optind];
  return options;
}

const char* usageText() {
  return R"(usage: qorix-adcheck [OPTION]... FILE

Reads an ad configuration document as a host would and tells what that host gets. FILE - is standard
input.

  --app ID               the host's bundle identifier (none)
  --languages LIST       the user's languages, separated by commas, most preferred first (none)
  --applications DIR     the folder of the installed applications (an empty one)
  --stored-version TEXT  the version that the machine has shown last (none)
  --stored-count N       how often it has shown that (none)
  --view-size WxH        the size of the host's view, for the report (800x600)
  --all-hosts            one row for each host that the document names, and one for all others
  --json                 print the record and the decision as JSON, the host's log on standard error
  --help                 print this
  --version              print the version

Exit status: 0 a record, 1 the document is refused, 2 wrong usage, or FILE cannot be read.
)";
}

}  // namespace qorix::adcheck
