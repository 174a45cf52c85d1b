#include "platform/gtk/PageIsolation.h"

#include <sys/wait.h>
#include <webkit2/webkit2.h>

#include <cerrno>
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

/// The engine ends the host if it cannot make the sandbox that it was told to use. So the same is
/// tried first, with the engine's own tools, in a process of its own: the host goes on meanwhile.
class SandboxTrial {
 public:
  SandboxTrial() {
    const std::unique_ptr<char, decltype(&g_free)> proxy(g_find_program_in_path("xdg-dbus-proxy"),
                                                         &g_free);
    if (proxy == nullptr) {
      return;
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
    const auto flags =
        static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                 G_SPAWN_STDERR_TO_DEV_NULL | G_SPAWN_DO_NOT_REAP_CHILD);
    isStarted_ = g_spawn_async(nullptr, const_cast<char**>(command), nullptr, flags, nullptr,
                               nullptr, &process_, nullptr) != FALSE;
  }

  /// Waits for its end. To be called once.
  bool waitForSuccess() {
    if (!isStarted_) {
      return false;
    }
    int status = -1;
    pid_t ended = -1;
    do {
      ended = ::waitpid(process_, &status, 0);
    } while (ended < 0 && errno == EINTR);
    return ended == process_ && g_spawn_check_wait_status(status, nullptr) != FALSE;
  }

 private:
  bool isStarted_ = false;
  GPid process_ = 0;
};

}  // namespace

WebKitWebContext* newIsolatedWebContext() {
  SandboxTrial sandbox;
  const std::unique_ptr<WebKitWebsiteDataManager, Unref> storesNothing(
      webkit_website_data_manager_new_ephemeral());
  WebKitMemoryPressureSettings* memoryLimit = newMemoryLimit();
  auto* context = WEBKIT_WEB_CONTEXT(g_object_new(WEBKIT_TYPE_WEB_CONTEXT, "website-data-manager",
                                                  storesNothing.get(), "memory-pressure-settings",
                                                  memoryLimit, nullptr));
  webkit_memory_pressure_settings_free(memoryLimit);
  if (sandbox.waitForSuccess()) {
    webkit_web_context_set_sandbox_enabled(context, TRUE);
  } else {
    logLine("ZAM Ad pages run without a sandbox: this system cannot make one");
  }
  return context;
}

}  // namespace qorix::gtk
