#include "platform/gtk/PageIsolation.h"

#include <webkit2/webkit2.h>

#include <memory>

#include <qorix/platform/Log.h>

#include "platform/gtk/Unref.h"

namespace qorix::gtk {

namespace {

WebKitMemoryPressureSettings* newMemoryLimit() {
  constexpr double kPollInterval = 5;  // seconds
  WebKitMemoryPressureSettings* settings = webkit_memory_pressure_settings_new();
  webkit_memory_pressure_settings_set_memory_limit(settings, kPageMemoryLimit);
  webkit_memory_pressure_settings_set_kill_threshold(settings, 1);
  webkit_memory_pressure_settings_set_poll_interval(settings, kPollInterval);
  return settings;
}

// The engine ends the host if it cannot make the sandbox that it was told to use. So the same is
// tried first, with the engine's own tools.
bool canMakeSandbox() {
  const std::unique_ptr<char, decltype(&g_free)> proxy(g_find_program_in_path("xdg-dbus-proxy"),
                                                       &g_free);
  if (proxy == nullptr) {
    return false;
  }
  const char* command[] = {"bwrap",
                           "--die-with-parent",
                           "--unshare-uts",
                           "--unshare-pid",
                           "--unshare-ipc",
                           "--unshare-cgroup-try",
                           "--ro-bind",
                           "/",
                           "/",
                           "--proc",
                           "/proc",
                           "--dev",
                           "/dev",
                           "--tmpfs",
                           "/tmp",
                           "true",
                           nullptr};
  int status = -1;
  const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                              G_SPAWN_STDERR_TO_DEV_NULL);
  return g_spawn_sync(nullptr, const_cast<char**>(command), nullptr, flags, nullptr, nullptr,
                      nullptr, nullptr, &status, nullptr) != FALSE &&
         g_spawn_check_wait_status(status, nullptr) != FALSE;
}

}  // namespace

WebKitWebContext* newIsolatedWebContext() {
  const std::unique_ptr<WebKitWebsiteDataManager, Unref> storesNothing(
      webkit_website_data_manager_new_ephemeral());
  WebKitMemoryPressureSettings* memoryLimit = newMemoryLimit();
  auto* context = WEBKIT_WEB_CONTEXT(g_object_new(WEBKIT_TYPE_WEB_CONTEXT, "website-data-manager",
                                                  storesNothing.get(), "memory-pressure-settings",
                                                  memoryLimit, nullptr));
  webkit_memory_pressure_settings_free(memoryLimit);
  if (canMakeSandbox()) {
    webkit_web_context_set_sandbox_enabled(context, TRUE);
  } else {
    logLine("ZAM Ad pages run without a sandbox: this system cannot make one");
  }
  return context;
}

}  // namespace qorix::gtk
