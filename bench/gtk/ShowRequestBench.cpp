// What the first show request of a process costs beside the web view that it makes. Each round is a
// process of its own, on a display of its own; the definition is in the cache, so that the request
// decides, counts and prepares before it returns.

#include <gtk/gtk.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <qorix/MyPushAdManager.h>
#include <qorix/gtk3.h>
#include <qorix/platform/Platform.h>

#include "support/Documents.h"
#include "support/VirtualDisplay.h"

namespace {

using Clock = std::chrono::steady_clock;

/// Adds up what the web view takes.
class TimedInterfaceLoader : public qorix::InterfaceLoader {
 public:
  explicit TimedInterfaceLoader(std::shared_ptr<qorix::InterfaceLoader> loader)
      : loader_(std::move(loader)) {}

  std::optional<qorix::Interface> load(const std::string& name, const qorix::Bundle& bundle,
                                       std::weak_ptr<qorix::WebViewDelegate> delegate) override {
    const auto start = Clock::now();
    auto interface = loader_->load(name, bundle, std::move(delegate));
    milliseconds += std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    return interface;
  }

  double milliseconds = 0;

 private:
  std::shared_ptr<qorix::InterfaceLoader> loader_;
};

// Prints the milliseconds of the request and, of these, of the web view.
int measureOnce(const std::string& settings) {
  gtk_init(nullptr, nullptr);
  qorix::gtk::InstallOptions options;
  options.bundleIdentifier = "com.example.editor";
  options.settingsPath = settings;
  qorix::gtk::install(options);
  qorix::Platform services = qorix::platform();
  const auto loader = std::make_shared<TimedInterfaceLoader>(services.interfaceLoader);
  services.interfaceLoader = loader;
  qorix::installPlatform(services);
  services.standardUserDefaults->setString(qorix::makeDocument({.count = "1000"}),
                                           "ZAMPushAdCachedAdContentsKey");
  services.standardUserDefaults->synchronize();

  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWidget* overlay = gtk_overlay_new();
  gtk_container_add(GTK_CONTAINER(window), overlay);
  gtk_widget_show_all(window);
  const auto view = qorix::gtk::viewForOverlay(GTK_OVERLAY(overlay));

  const auto start = Clock::now();
  const auto manager = qorix::MyPushAdManager::sharedPushAdManager();
  manager->configureWithAppBundle(qorix::platform().mainBundle);
  manager->prepareAndShowAdWithHostView(view, qorix::MyPushAdFileHostModeWebServer,
                                        "http://127.0.0.1:9/commonad.xml");
  const double request = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  std::printf("%f %f\n", request, loader->milliseconds);
  return EXIT_SUCCESS;
}

double medianOf(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

int compare(const std::string& program) {
  constexpr int kRounds = 15;
  const auto display = qorix::test::VirtualDisplay::start();
  if (display == nullptr) {
    return EXIT_FAILURE;
  }
  display->useInThisProcess();
  const auto settings =
      std::filesystem::current_path() / ("bench-request-" + std::to_string(getpid()) + ".sqlite");
  std::vector<double> requests;
  std::vector<double> webViews;
  for (int round = 0; round < kRounds; ++round) {
    FILE* child = popen((program + " --once " + settings.string() + " 2>/dev/null").c_str(), "r");
    double request = 0;
    double webView = 0;
    if (child == nullptr || std::fscanf(child, "%lf %lf", &request, &webView) != 2) {
      return EXIT_FAILURE;
    }
    pclose(child);
    requests.push_back(request);
    webViews.push_back(webView);
  }
  for (const char* companion : {"", "-wal", "-shm"}) {
    std::filesystem::remove(settings.string() + companion);
  }
  std::vector<double> ours;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    ours.push_back(requests[i] - webViews[i]);
  }
  std::printf("The first show request   %8.3f ms (median of %d processes)\n", medianOf(requests),
              kRounds);
  std::printf("Of it the web view       %8.3f ms\n", medianOf(webViews));
  std::printf("Beside the web view      %8.3f ms, ratio to the web view %.3f\n", medianOf(ours),
              medianOf(ours) / medianOf(webViews));
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  return argc == 3 && std::string(argv[1]) == "--once" ? measureOnce(argv[2]) : compare(argv[0]);
}
