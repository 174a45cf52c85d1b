// What a host with shown banners costs while nothing happens, beside a host with as many bare web
// views of the same static page: wake-ups, processor time, threads, descriptors and memory of the
// host process.

#include <gtk/gtk.h>
#include <sys/resource.h>
#include <webkit2/webkit2.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <qorix/MyPushAdManager.h>
#include <qorix/gtk3.h>

#include "gtk/BenchHost.h"
#include "support/LoopbackServer.h"
#include "support/Measuring.h"

namespace qorix::bench {
namespace {

double kilobytesOfShare() {
  std::ifstream lines("/proc/self/smaps_rollup");
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("Pss:")) {
      return std::stod(line.substr(4));
    }
  }
  return 0;
}

double entriesOf(const char* folder) {
  return static_cast<double>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

/// How often the threads of this process have waited so far.
double waitsOfThreads() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_nvcsw);
}

void serveFor(double seconds) {
  bool isOver = false;
  g_timeout_add(
      static_cast<guint>(seconds * 1000),
      [](gpointer over) { return *static_cast<bool*>(over) = true, G_SOURCE_REMOVE; }, &isOver);
  while (!isOver) {
    gtk_main_iteration();
  }
}

void addBareView(GtkOverlay* overlay) {
  GtkWidget* webView = webkit_web_view_new();
  gtk_widget_set_size_request(webView, kAdWidth, kAdHeight);
  gtk_widget_set_halign(webView, GTK_ALIGN_START);
  gtk_widget_set_valign(webView, GTK_ALIGN_START);
  gtk_overlay_add_overlay(overlay, webView);
  gtk_widget_show(webView);
  webkit_web_view_load_html(WEBKIT_WEB_VIEW(webView), kPage, nullptr);
}

/// One run.
void measure(const Arguments& arguments) {
  const bool isAd = arguments[0] == "ad";
  const int count = std::stoi(arguments[1]);
  const double seconds = std::stod(arguments[2]);
  gtk_init(nullptr, nullptr);
  BenchHost host(count);
  if (isAd) {
    host.install(arguments[3]);
  }
  for (GtkOverlay* overlay : host.overlays()) {
    if (isAd) {
      host.requestAd(overlay, arguments[4]);
    } else {
      addBareView(overlay);
    }
  }
  serveFor(rounds(count == 1 ? 5 : 15));  // what follows a load has been done by then
  const double atFirst = waitsOfThreads();
  serveFor(seconds);
  const double then = waitsOfThreads();
  serveFor(seconds);
  printNumbers({then - atFirst, waitsOfThreads() - then, entriesOf("/proc/self/task"),
                entriesOf("/proc/self/fd"), kilobytesOfShare() / 1024});
}

void compare() {
  const BenchDesktop desktop(kBanner);
  // After a fetch that succeeds, nothing is to be done any more.
  LoopbackServer server;
  server.setAnswer("/ad.xml", {.body = {desktop.document()}});
  printHeading("At rest", "of the host process");
  for (const int count : {1, 20}) {
    const std::string number = std::to_string(count);
    const std::string time = std::to_string(rounds(count == 1 ? 60 : 5));
    const auto found =
        runsInTurns(1, {{"ad", number, time, desktop.settings(), server.url("/ad.xml")},
                        {"bare", number, time, "", ""}});
    const std::string views = count == 1 ? "1 bare view" : "20 bare views";
    const std::string banners = count == 1 ? "1 banner" : "20 banners";
    const std::vector<std::string> numbers = {"wake-ups in the first " + time + " s",
                                              "wake-ups in the next " + time + " s", "threads",
                                              "descriptors", "MB (PSS)"};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      printRow({banners + ", " + numbers[i], found[0][i], views, found[1][i]});
    }
  }
}

}  // namespace
}  // namespace qorix::bench

int main(int argc, char** argv) {
  if (argc == 6) {
    qorix::bench::measure({argv + 1, argv + argc});
    std::fflush(stdout);
    std::_Exit(EXIT_SUCCESS);  // the engine's processes end with the connection
  }
  qorix::bench::compare();
}
