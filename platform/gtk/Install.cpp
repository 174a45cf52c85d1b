#include <gtk/gtk.h>

#include <future>
#include <utility>

#include <qorix/gtk3.h>
#include <qorix/platform/Platform.h>

#include "platform/Guarded.h"
#include "platform/gtk/DesktopWorkspace.h"
#include "platform/gtk/HostWindows.h"
#include "platform/gtk/MainContextRunLoop.h"
#include "platform/gtk/ResourceInterfaceLoader.h"
#include "platform/gtk/ToplevelWindow.h"
#include "platform/gtk/WidgetView.h"
#include "platform/linux/CloudKitContainers.h"
#include "platform/linux/CurlUrlSession.h"
#include "platform/linux/DesktopEntryRegistry.h"
#include "platform/linux/HttpQueue.h"
#include "platform/linux/LinuxApplicationsFolder.h"
#include "platform/linux/LinuxBundle.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "platform/linux/StandardErrorLog.h"

namespace qorix::gtk {

namespace {

std::shared_ptr<UserDefaults> settingsFor(const InstallOptions& options,
                                          const std::shared_ptr<Log>& log) {
  if (options.settings != nullptr) {
    return options.settings;
  }
  return std::make_shared<SqliteUserDefaults>(options.settingsPath.empty()
                                                  ? defaultSettingsPath(options.bundleIdentifier)
                                                  : options.settingsPath,
                                              log);
}

CloudKitContainerFactory::Options cloudOptions(const InstallOptions& options) {
  CloudKitContainerFactory::Options cloud;
  if (!options.cloudServiceAddress.empty()) {
    cloud.serviceAddress = options.cloudServiceAddress;
  }
  if (!options.cloudEnvironment.empty()) {
    cloud.environment = options.cloudEnvironment;
  }
  cloud.apiToken = options.cloudApiToken;
  return cloud;
}

void installServices(const InstallOptions& options) {
  const std::shared_ptr<Log> log = std::make_shared<StandardErrorLog>();
  // Opening the file takes as long as preparing the transfers: both go on at once.
  auto settings = std::async([&] { return settingsFor(options, log); });
  // Before the run loop: when the process ends, what was made last goes first, and the threads that
  // fetch can only be ended once none of them waits for the loop any more.
  HttpQueue::prepare();
  const auto runLoop = std::make_shared<MainContextRunLoop>();
  Platform services;
  services.log = log;
  services.mainRunLoop = runLoop;
  services.mainBundle = hostBundle(options.bundleIdentifier);
  services.libraryBundle = libraryBundle();
  services.urlSessions = std::make_shared<CurlUrlSessionFactory>();
  services.cloudContainers = std::make_shared<CloudKitContainerFactory>(cloudOptions(options));
  services.applicationsFolder =
      std::make_shared<LinuxApplicationsFolder>(options.applicationsDirectory);
  services.applicationRegistry = std::make_shared<DesktopEntryRegistry>();
  services.workspace = std::make_shared<DesktopWorkspace>();
  services.windows = std::make_shared<ToplevelWindowFactory>();
  services.interfaceLoader = std::make_shared<ResourceInterfaceLoader>(runLoop);
  services.standardUserDefaults = settings.get();
  services.defaultAdFileUrl = options.defaultAdFileUrl;
  services.defaultCloudContainerIdentifier = options.defaultCloudContainerIdentifier;
  services.documentPublicKeys = options.documentPublicKeys;
  installPlatform(std::move(services));
}

std::shared_ptr<View> viewOf(GtkOverlay* overlay) {
  if (overlay == nullptr || gtk_widget_in_destruction(GTK_WIDGET(overlay))) {
    return nullptr;
  }
  noteHostWidget(GTK_WIDGET(overlay));
  if (const auto* existing = NativeView::of(GTK_WIDGET(overlay))) {
    return existing->self();
  }
  return makeNativeView<WidgetView<View>>(GTK_WIDGET(overlay), Ownership::widgetOwnsView);
}

}  // namespace

void install(const InstallOptions& options) {
  static bool isInstalled = false;
  callGuarded([&options] {
    if (isInstalled) {
      logLine("ZAM QORIX is installed already: the second installation is refused.");
      return;
    }
    installServices(options);
    isInstalled = true;
    if (gdk_display_get_default() == nullptr) {
      logLine("ZAM QORIX is installed without a display: nothing can be shown");
    }
  });
}

std::shared_ptr<View> viewForOverlay(GtkOverlay* overlay) {
  std::shared_ptr<View> view;
  callGuarded([&] { view = viewOf(overlay); });
  return view;
}

}  // namespace qorix::gtk
