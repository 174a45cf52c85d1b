// qorix-sample-host: a small editor that shows the advertisements of its maker's other
// applications. Everything that a host needs is in main() and showAdvertisements(), but for the
// views, which EditorWindow.cpp makes.

#include <glib-unix.h>
#include <gtk/gtk.h>

#include <csignal>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qorix/gtk3.h>
#include <qorix/platform/Platform.h>
#include <qorix/qorix.h>

#include "EditorWindow.h"
#include "EventPrinter.h"
#include "LanguagesOfThisRun.h"
#include "Options.h"

namespace {

// Where the maker of the sample's applications would publish the document.
constexpr const char* kMakersAdFile = "https://www.example.com/mac/ads/commonad.xml";

struct Host {
  Options options;
  std::shared_ptr<qorix::MyPushAdManager> manager;
  std::vector<std::shared_ptr<qorix::View>> views;
  bool isUp = false;
};

qorix::gtk::InstallOptions installOptions(const Options& options) {
  qorix::gtk::InstallOptions install;
  install.bundleIdentifier = options.bundleId;
  install.settingsPath = options.defaults;
  install.applicationsDirectory = options.applications;
  install.defaultAdFileUrl = kMakersAdFile;
  install.cloudServiceAddress = options.cloudBase.value_or("");
  install.cloudEnvironment = options.cloudEnvironment.value_or("");
  install.cloudApiToken = options.cloudToken.value_or("");
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
  auto views = host.views;
  if (views.empty()) {
    views.push_back(nullptr);
  }
  for (const auto& view : views) {
    if (host.options.cloudContainer) {
      host.manager->prepareAndShowAdWithHostView(view, qorix::MyPushAdFileHostModeCloudKit,
                                                 host.options.cloudContainer);
    } else if (host.options.url) {
      host.manager->prepareAndShowAdWithHostView(view, qorix::MyPushAdFileHostModeWebServer,
                                                 host.options.url);
    } else {
      host.manager->prepareAndShowAdByUsingMyAppWebServerURLWithHostView(view);
    }
  }
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
  host.manager = qorix::gtk::start(installOptions(host.options));
  if (!host.options.languages.empty()) {
    overrideLanguages(host.options.languages);
  }

  EditorWindow editor =
      createEditorWindow("Sample Editor - " + host.options.bundleId, host.options.hostViews,
                         host.options.viewWidth, host.options.viewHeight);
  GtkWidget* window = editor.window;
  host.views = std::move(editor.views);
  const auto observations = printAdEvents(host.views);
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
