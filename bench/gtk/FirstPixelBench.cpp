// From the show request, with a document in the cache, to the first pixel of its page on the
// screen, beside a bare web view that loads the same page in the same kind of place. Each showing
// is a process of its own.

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include "gtk/BenchHost.h"
#include "gtk/ScreenWatch.h"
#include "support/Measuring.h"

namespace qorix::bench {
namespace {

GtkWidget* newWebView() {
  GtkWidget* webView = webkit_web_view_new();
  gtk_widget_set_size_request(webView, kAdWidth, kAdHeight);
  webkit_web_view_load_html(WEBKIT_WEB_VIEW(webView), kPage, nullptr);
  return webView;
}

void showBareBanner(GtkOverlay* overlay) {
  GtkWidget* webView = newWebView();
  gtk_widget_set_halign(webView, GTK_ALIGN_START);
  gtk_widget_set_valign(webView, GTK_ALIGN_START);
  gtk_overlay_add_overlay(overlay, webView);
  gtk_widget_show(webView);
}

void showBareWindow() {
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_keep_above(GTK_WINDOW(window), TRUE);
  gtk_container_add(GTK_CONTAINER(window), newWebView());
  gtk_widget_show_all(window);
}

/// One run. `shown` is "ad", "banner" or "window"; "sandbox" puts the page of a bare web view into
/// the engine's sandbox, in which those of the library always run.
void measure(const std::string& shown, const std::string& settings) {
  gtk_init(nullptr, nullptr);
  const bool isSandboxed = settings == "sandbox";
  BenchHost host;
  if (shown == "ad") {
    host.install(settings);
  }
  ScreenWatch watch(kPageColor);
  const auto start = ScreenWatch::Clock::now();
  if (isSandboxed) {
    webkit_web_context_set_sandbox_enabled(webkit_web_context_get_default(), TRUE);
  }
  if (shown == "ad") {
    host.requestAd(host.overlay());
  } else if (shown == "banner") {
    showBareBanner(host.overlay());
  } else {
    showBareWindow();
  }
  const auto seen = watch.waitForColor();
  printNumbers({std::chrono::duration<double, std::milli>(seen - start).count()});
}

void compare() {
  constexpr int kProcesses = 30;
  printHeading("From the show request to the first pixel", "ms");
  for (const std::string& kind : {std::string("banner"), std::string("window")}) {
    const BenchDesktop desktop(kind == "banner" ? kBanner : kPopup);
    const auto medians = runsInTurns(rounds(kProcesses),
                                     {{"ad", desktop.settings()}, {kind, ""}, {kind, "sandbox"}});
    const std::string what = kind == "banner" ? "banner" : "pop-up";
    const std::string reference = "a bare web view in a " + kind;
    printRow({what, medians[0][0], reference, medians[1][0], 1.05});
    printRow({what, medians[0][0], reference + ", in the engine's sandbox", medians[2][0], 1.05});
  }
}

}  // namespace
}  // namespace qorix::bench

int main(int argc, char** argv) {
  if (argc == 3) {
    qorix::bench::measure(argv[1], argv[2]);
    std::fflush(stdout);
    std::_Exit(EXIT_SUCCESS);  // the engine's processes end with the connection
  }
  qorix::bench::compare();
}
