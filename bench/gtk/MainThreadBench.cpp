// What the library does on the main thread while the host waits: every call that a host makes and
// every task and call-back on its loop, beside the web engine itself, whose calls are taken off.
// Each run is a process of its own.

#include <gtk/gtk.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qorix/MyPushAdManager.h>
#include <qorix/gtk3.h>
#include <qorix/platform/Platform.h>

#include "gtk/BenchHost.h"
#include "gtk/ScreenWatch.h"
#include "gtk/TimedServices.h"
#include "support/Measuring.h"

namespace qorix::bench {
namespace {

void waitFor(const std::function<bool()>& condition) {
  while (!condition()) {
    gtk_main_iteration();
  }
}

/// One run: prints the microseconds of each stretch, in the order of `kStretches`.
void measure(const std::string& settings) {
  gtk_init(nullptr, nullptr);
  BenchHost host;
  Stretches stretches;
  std::vector<double> numbers;
  numbers.push_back(stretches.timed([&] { host.install(settings); }));
  installTimedServices(stretches);

  numbers.push_back(stretches.timed([&] { host.requestAd(host.overlay()); }));
  numbers.push_back(stretches.longest("commit"));
  const double webView = stretches.engineMicroseconds();
  stretches.forget();
  ScreenWatch watch(kPageColor);
  watch.waitForColor();
  waitFor([&] { return stretches.longest("finished load") > 0; });
  numbers.push_back(stretches.longest("task"));
  numbers.push_back(stretches.longest("finished load"));

  numbers.push_back(stretches.timed([&] { host.requestAd(host.overlay()); }));
  for (int request = 3; request < 100; ++request) {
    host.requestAd(host.overlay());
  }
  numbers.push_back(stretches.timed([&] { host.requestAd(host.overlay()); }));

  const auto hostView = gtk::viewForOverlay(host.overlay());
  numbers.push_back(stretches.timed([&] {
    platform().notificationCenter->post({kViewFrameDidChangeNotification, hostView});
  }));

  const auto [x, y] = watch.place();
  const std::string click =
      "xdotool mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1";
  if (std::system(click.c_str()) != 0) {
    std::_Exit(EXIT_FAILURE);
  }
  waitFor([&] { return stretches.longest("click") > 0; });
  numbers.push_back(stretches.longest("click"));
  numbers.push_back(webView);
  printNumbers(numbers);
}

struct Stretch {
  const char* what;
  double most;  // microseconds
};
constexpr Stretch kStretches[] = {
    {"installing", 1000},
    {"the first show request", 500},
    {"of it the durable commit", 1000},
    {"the longest task of the showing", 1000},
    {"a finished load", 1000},
    {"the second show request", 1000},
    {"the hundredth", 1000},
    {"a frame change", 1000},
    {"a click", 1000},
};

void compare() {
  const BenchDesktop desktop(kBanner);
  const auto medians = runsInTurns(rounds(7), {{desktop.settings()}}).front();
  const double webView = medians.back();
  printHeading("Stretches of the main thread, beside the web engine", "us");
  for (std::size_t index = 0; index < std::size(kStretches); ++index) {
    printRow({kStretches[index].what, medians.at(index), "making the web view", webView});
  }
  printLimitsHeading("The same, against what a host may notice", "us");
  for (std::size_t index = 0; index < std::size(kStretches); ++index) {
    printLimit(kStretches[index].what, medians.at(index), kStretches[index].most);
  }
}

}  // namespace
}  // namespace qorix::bench

int main(int argc, char** argv) {
  if (argc == 2) {
    qorix::bench::measure(argv[1]);
    std::fflush(stdout);
    std::_Exit(EXIT_SUCCESS);  // the engine's processes end with the connection
  }
  qorix::bench::compare();
}
