// What a finished load costs in scripts: the time that the page is held and the host waits, beside
// as many bare evaluations in a bare web view. The page takes part in everything.

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <qorix/MyPushAdViewController.h>
#include <qorix/gtk3.h>
#include <qorix/platform/View.h>

#include "gtk/BenchHost.h"
#include "gtk/ScreenWatch.h"
#include "support/Measuring.h"

namespace qorix::bench {
namespace {

constexpr int kEvaluations = 4;  // does it take part, which applications, here they are, hide

constexpr const char* kScriptedPage =
    "<body style='margin:0;background:#f00'><button id='cocoa_close_web'>x</button><script>"
    "function cocoa_obtain_promo_app_ids() { return 'com.example.a,com.example.b'; }"
    "function cocoa_post_promo_app_info(host, ids, flags) {}</script></body>";

void showInWindow(GtkWidget* widget) {
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_default_size(GTK_WINDOW(window), kAdWidth, kAdHeight);
  gtk_container_add(GTK_CONTAINER(window), widget);
  gtk_widget_show_all(window);
}

void evaluateBare(WebKitWebView* webView, const char* script) {
  bool isDone = false;
  webkit_web_view_evaluate_javascript(
      webView, script, -1, nullptr, nullptr, nullptr,
      [](GObject* view, GAsyncResult* result, gpointer done) {
        JSCValue* value =
            webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, nullptr);
        g_object_unref(value);
        *static_cast<bool*>(done) = true;
      },
      &isDone);
  while (!isDone) {
    gtk_main_iteration();
  }
}

void compare() {
  BenchHost host;
  host.install("");
  const auto controller = MyPushAdViewController::createInstanceWithPushAdMode(MyPushAdModePopup);
  gtk::viewForOverlay(host.overlay())->addSubview(controller->view());
  controller->loadDataWithTitle(std::nullopt, kScriptedPage);
  ScreenWatch(kPageColor).waitForColor();
  GtkWidget* bare = webkit_web_view_new();
  webkit_web_view_load_html(WEBKIT_WEB_VIEW(bare), kScriptedPage, nullptr);
  showInWindow(bare);
  while (webkit_web_view_is_loading(WEBKIT_WEB_VIEW(bare)) != FALSE) {
    gtk_main_iteration();
  }
  serveLoop();
  const auto webView = controller->legacyWebView();
  const auto times =
      inTurns(rounds(501), {[&] { controller->webViewDidFinishLoadForFrame(webView, {}); },
                            [&] {
                              for (int index = 0; index < kEvaluations; ++index) {
                                evaluateBare(WEBKIT_WEB_VIEW(bare),
                                             "document.getElementById('cocoa_close_web').id");
                              }
                            }});
  printHeading("The scripts after a load", "us");
  printRow({"the work of a finished load", times[0], "four bare evaluations", times[1], 1.1});
}

}  // namespace
}  // namespace qorix::bench

int main() {
  const qorix::bench::BenchDesktop desktop(qorix::bench::kPopup);
  gtk_init(nullptr, nullptr);
  qorix::bench::compare();
  std::fflush(stdout);
  std::_Exit(EXIT_SUCCESS);  // the engine's processes end with the connection
}
