#include "Options.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>

namespace {

constexpr const char* kUsage =
    R"(usage: qorix-sample-host [OPTION]...

Shows a small editor and, in its views, the advertisement that an ad configuration document names.
Prints one JSON object a line for each thing that happens.

  --bundle-id ID            who the host is (com.example.editor)
  --url URL                 where the document is
  --cloud-container ID      take the document from this container instead
  --cloud-base URL          where the cloud service is
  --cloud-environment NAME  development or production
  --cloud-token TOKEN       the container's API token
  --host-views N            how many views to offer (1); with 0 the host passes none
  --view-size WxH           size of each view (800x500)
  --defaults FILE           settings file
  --applications DIR        folder of the installed applications
  --languages LIST          the user's languages for this run, separated by commas
  --quit-after SECONDS      quit by itself
  --screenshot FILE         save a picture of the screen, a PNG, just before quitting
  --help                    print this
)";

[[noreturn]] void refuse(const std::string& why) {
  std::fprintf(stderr, "qorix-sample-host: %s\nTry --help.\n", why.c_str());
  std::exit(2);
}

// The whole text as a number from `least` to `most`.
template <class Number>
Number parseNumber(const std::string& option, const std::string& text, Number least, Number most) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || !(number >= least && number <= most)) {
    refuse(option + " cannot be '" + text + "'");
  }
  return number;
}

std::vector<std::string> splitAtCommas(const std::string& text) {
  std::vector<std::string> pieces;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, ',');) {
    pieces.push_back(piece);
  }
  return pieces;
}

}  // namespace

Options parseOptions(int argc, char** argv) {
  Options options;
  const std::map<std::string, std::function<void(const std::string&)>> readers = {
      {"--bundle-id", [&](auto& value) { options.bundleId = value; }},
      {"--url", [&](auto& value) { options.url = value; }},
      {"--cloud-container", [&](auto& value) { options.cloudContainer = value; }},
      {"--cloud-base", [&](auto& value) { options.cloudBase = value; }},
      {"--cloud-environment", [&](auto& value) { options.cloudEnvironment = value; }},
      {"--cloud-token", [&](auto& value) { options.cloudToken = value; }},
      {"--host-views",
       [&](auto& value) { options.hostViews = parseNumber("--host-views", value, 0, 100); }},
      {"--view-size",
       [&](auto& value) {
         const auto cross = value.find('x');
         if (cross == std::string::npos) {
           refuse("--view-size needs a width and a height, as in 800x500");
         }
         options.viewWidth = parseNumber("--view-size", value.substr(0, cross), 1, 10000);
         options.viewHeight = parseNumber("--view-size", value.substr(cross + 1), 1, 10000);
       }},
      {"--defaults", [&](auto& value) { options.defaults = value; }},
      {"--applications", [&](auto& value) { options.applications = value; }},
      {"--languages", [&](auto& value) { options.languages = splitAtCommas(value); }},
      {"--quit-after",
       [&](auto& value) { options.quitAfter = parseNumber("--quit-after", value, 0.0, 1e6); }},
      {"--screenshot", [&](auto& value) { options.screenshot = value; }},
  };
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name == "--help") {
      std::fputs(kUsage, stdout);
      std::exit(0);
    }
    const auto reader = readers.find(name);
    if (reader == readers.end()) {
      refuse("unknown option '" + name + "'");
    }
    if (++i == argc) {
      refuse(name + " needs a value");
    }
    reader->second(argv[i]);
  }
  if (options.url && options.cloudContainer) {
    refuse("the document has one source: either --url or --cloud-container");
  }
  return options;
}
