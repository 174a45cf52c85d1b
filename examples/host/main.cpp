// qorix-sample-host: a small editor that shows the advertisements of its maker's other
// applications. Everything that a host needs is in main() and showAdvertisements().

#include <glib-unix.h>
#include <gtk/gtk.h>

#include <csignal>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "EventPrinter.h"
#include "LanguagesOfThisRun.h"
#include "Options.h"
#include "platform/Platform.h"
#include "platform/gtk/Install.h"
#include "qorix/MyPushAdManager.h"

namespace {

constexpr const char* kText =
    "The quick brown fox\n\n"
    "Pack my box with five dozen liquor jugs.\n"
    "Sphinx of black quartz, judge my vow.\n"
    "How vexingly quick daft zebras jump!\n";

struct Host {
  Options options;
  std::vector<std::shared_ptr<qorix::View>> views;
  bool isUp = false;
};

qorix::gtk::InstallOptions installOptions(const Options& options) {
  qorix::gtk::InstallOptions install;
  install.bundleIdentifier = options.bundleId;
  install.settingsPath = options.defaults;
  install.applicationsDirectory = options.applications;
  return install;
}

void overrideLanguages(const std::vector<std::string>& languages) {
  qorix::Platform services = qorix::platform();
  services.standardUserDefaults =
      std::make_shared<LanguagesOfThisRun>(services.standardUserDefaults, languages);
  qorix::installPlatform(services);
}

// Offers each view, or none, to the library. It fetches the document and does the rest.
void showAdvertisements(const Host& host) {
  const auto manager = qorix::MyPushAdManager::sharedPushAdManager();
  manager->configureWithAppBundle(qorix::platform().mainBundle);
  auto views = host.views;
  if (views.empty()) {
    views.push_back(nullptr);
  }
  for (const auto& view : views) {
    if (host.options.cloudContainer) {
      manager->prepareAndShowAdWithHostView(view, qorix::MyPushAdFileHostModeCloudKit,
                                            host.options.cloudContainer);
    } else if (host.options.url) {
      manager->prepareAndShowAdWithHostView(view, qorix::MyPushAdFileHostModeWebServer,
                                            host.options.url);
    } else {
      manager->prepareAndShowAdByUsingMyAppWebServerURLWithHostView(view);
    }
  }
}

GtkWidget* createMenuBar() {
  GtkWidget* quit = gtk_menu_item_new_with_mnemonic("_Quit");
  g_signal_connect(quit, "activate", G_CALLBACK(gtk_main_quit), nullptr);
  GtkWidget* fileMenu = gtk_menu_new();
  gtk_menu_shell_append(GTK_MENU_SHELL(fileMenu), quit);
  GtkWidget* file = gtk_menu_item_new_with_mnemonic("_File");
  gtk_menu_item_set_submenu(GTK_MENU_ITEM(file), fileMenu);
  GtkWidget* bar = gtk_menu_bar_new();
  gtk_menu_shell_append(GTK_MENU_SHELL(bar), file);
  return bar;
}

// A text view inside an overlay, in which a banner can lie on top of the text.
GtkWidget* createEditor() {
  GtkWidget* text = gtk_text_view_new();
  gtk_text_view_set_left_margin(GTK_TEXT_VIEW(text), 12);
  gtk_text_view_set_top_margin(GTK_TEXT_VIEW(text), 12);
  gtk_text_buffer_set_text(gtk_text_view_get_buffer(GTK_TEXT_VIEW(text)), kText, -1);
  GtkWidget* scroller = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_container_add(GTK_CONTAINER(scroller), text);
  GtkWidget* overlay = gtk_overlay_new();
  gtk_container_add(GTK_CONTAINER(overlay), scroller);
  return overlay;
}

GtkWidget* createWindow(Host& host) {
  const Options& options = host.options;
  GtkWidget* editors = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_set_homogeneous(GTK_BOX(editors), TRUE);
  for (int i = 0; i < options.hostViews; ++i) {
    GtkWidget* overlay = createEditor();
    gtk_container_add(GTK_CONTAINER(editors), overlay);
    gtk_widget_set_vexpand(overlay, TRUE);
    host.views.push_back(qorix::gtk::viewForOverlay(GTK_OVERLAY(overlay)));
  }
  GtkWidget* menuBar = createMenuBar();
  GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_container_add(GTK_CONTAINER(content), menuBar);
  gtk_container_add(GTK_CONTAINER(content), editors);
  gtk_widget_show_all(content);

  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(window), ("Sample Editor - " + options.bundleId).c_str());
  gtk_container_add(GTK_CONTAINER(window), content);
  int menuBarHeight = 0;
  gtk_widget_get_preferred_height(menuBar, nullptr, &menuBarHeight);
  gtk_window_set_default_size(GTK_WINDOW(window), options.viewWidth,
                              menuBarHeight + options.hostViews * options.viewHeight);
  return window;
}

gboolean windowIsUp(GtkWidget* /*window*/, GdkEvent* /*event*/, gpointer data) {
  auto& host = *static_cast<Host*>(data);
  if (!host.isUp) {
    host.isUp = true;
    printEvent("ready");
    showAdvertisements(host);
  }
  return GDK_EVENT_PROPAGATE;
}

// The window stays until the process ends, so that the picture shows it.
gboolean windowIsClosing() {
  gtk_main_quit();
  return GDK_EVENT_STOP;
}

gboolean quit(gpointer /*data*/) {
  gtk_main_quit();
  return G_SOURCE_REMOVE;
}

bool saveScreenshot(const std::string& file) {
  GdkWindow* root = gdk_get_default_root_window();
  GdkPixbuf* picture = gdk_pixbuf_get_from_window(root, 0, 0, gdk_window_get_width(root),
                                                  gdk_window_get_height(root));
  GError* error = nullptr;
  const bool saved =
      picture != nullptr && gdk_pixbuf_save(picture, file.c_str(), "png", &error, nullptr);
  if (!saved) {
    std::fprintf(stderr, "qorix-sample-host: no screenshot: %s\n",
                 error != nullptr ? error->message : "the screen cannot be read");
  }
  g_clear_error(&error);
  g_clear_object(&picture);
  return saved;
}

}  // namespace

int main(int argc, char** argv) {
  Host host;
  host.options = parseOptions(argc, argv);
  if (!gtk_init_check(nullptr, nullptr)) {
    std::fputs("qorix-sample-host: there is no display\n", stderr);
    return 1;
  }
  qorix::gtk::install(installOptions(host.options));
  if (!host.options.languages.empty()) {
    overrideLanguages(host.options.languages);
  }

  GtkWidget* window = createWindow(host);
  printNotifications(host.views);
  g_signal_connect(window, "map-event", G_CALLBACK(windowIsUp), &host);
  g_signal_connect(window, "delete-event", G_CALLBACK(windowIsClosing), nullptr);
  g_unix_signal_add(SIGTERM, quit, nullptr);
  g_unix_signal_add(SIGINT, quit, nullptr);
  if (host.options.quitAfter) {
    g_timeout_add(static_cast<guint>(*host.options.quitAfter * 1000), quit, nullptr);
  }
  gtk_widget_show(window);
  gtk_main();

  const bool saved = !host.options.screenshot || saveScreenshot(*host.options.screenshot);
  printEvent("quit");
  return saved ? 0 : 1;
}
