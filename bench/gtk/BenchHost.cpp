#include "gtk/BenchHost.h"

#include <cstdio>
#include <cstdlib>

#include <qorix/gtk3.h>
#include <qorix/platform/Platform.h>

#include "platform/linux/SqliteUserDefaults.h"
#include "support/Documents.h"

namespace qorix::bench {

BenchDesktop::BenchDesktop(const std::string& embed)
    : document_(
          makeDocument({.embed = embed,
                        .width = std::to_string(kAdWidth),
                        .height = std::to_string(kAdHeight),
                        .count = "100000",
                        .html = element("default", std::string("<![CDATA[") + kPage + "]]>")})),
      display_(test::VirtualDisplay::start()) {
  if (display_ == nullptr) {
    std::exit(EXIT_FAILURE);
  }
  display_->useInThisProcess();
  SqliteUserDefaults file(settings());
  file.setString(document_, "ZAMPushAdCachedAdContentsKey");
  file.synchronize();
}

BenchHost::BenchHost(int places) {
  constexpr int kColumns = 3;
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWidget* grid = gtk_grid_new();
  gtk_container_add(GTK_CONTAINER(window), grid);
  for (int place = 0; place < places; ++place) {
    GtkWidget* overlay = gtk_overlay_new();
    gtk_widget_set_size_request(overlay, kAdWidth + 20, kAdHeight + 20);
    gtk_grid_attach(GTK_GRID(grid), overlay, place % kColumns, place / kColumns, 1, 1);
    overlays_.push_back(GTK_OVERLAY(overlay));
  }
  gtk_widget_show_all(window);
  while (gtk_window_is_active(GTK_WINDOW(window)) == FALSE) {
    gtk_main_iteration();
  }
  serveLoop();
}

void BenchHost::install(const std::string& settings) {
  gtk::InstallOptions options;
  options.bundleIdentifier = "com.example.editor";
  options.settingsPath = settings;
  gtk::install(options);
}

void BenchHost::requestAd(GtkOverlay* overlay, const std::string& address) {
  const auto manager = MyPushAdManager::sharedPushAdManager();
  manager->configureWithAppBundle(platform().mainBundle);
  manager->prepareAndShowAdWithHostView(gtk::viewForOverlay(overlay), MyPushAdFileHostModeWebServer,
                                        address);
}

void serveLoop() {
  while (gtk_events_pending() != FALSE) {
    gtk_main_iteration();
  }
}

}  // namespace qorix::bench
