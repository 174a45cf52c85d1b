#include "support/gtk/Compositor.h"

#include <gio/gio.h>
#include <pwd.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "support/TemporaryFolder.h"
#include "support/Wait.h"

namespace qorix::test {

namespace {

constexpr double kStartLimit = 30;  // seconds

// sway does not run as root.
std::vector<std::string> asAnotherUser(std::vector<std::string> command) {
  if (geteuid() == 0) {
    const std::vector<std::string> prefix = {"setpriv", "--pdeathsig", "TERM",    "--reuid",
                                             "nobody",  "--regid",     "nogroup", "--clear-groups"};
    command.insert(command.begin(), prefix.begin(), prefix.end());
  }
  return command;
}

}  // namespace

struct Compositor::Parts {
  TemporaryFolder folder;
  std::string socket;
  GSubprocess* process = nullptr;
};

Compositor::Compositor() : parts_(std::make_unique<Parts>()) {}

std::unique_ptr<Compositor> Compositor::startSway(const std::vector<int>& scales) {
  std::unique_ptr<Compositor> desktop(new Compositor);
  const TemporaryFolder& folder = desktop->parts_->folder;
  std::ofstream config(folder / "config");
  for (std::size_t i = 0; i < scales.size(); ++i) {
    config << "output HEADLESS-" << i + 1 << " resolution 1280x1024 scale " << scales[i] << "\n";
  }
  config << "exec touch " << folder / "ready"
         << "\n";
  config.close();
  setenv("SWAYSOCK", (folder / "sway").c_str(), 1);
  setenv("WLR_HEADLESS_OUTPUTS", std::to_string(scales.size()).c_str(), 1);
  if (geteuid() == 0) {
    const passwd* nobody = getpwnam("nobody");
    if (nobody == nullptr || chown(folder.path().c_str(), nobody->pw_uid, nobody->pw_gid) != 0) {
      return nullptr;
    }
  }
  const bool isUp =
      desktop->start(asAnotherUser({"sway", "-c", folder / "config"}), "wayland-1") &&
      waitUntil([&] { return std::filesystem::exists(folder / "ready"); }, kStartLimit);
  return isUp ? std::move(desktop) : nullptr;
}

std::unique_ptr<Compositor> Compositor::startWeston() {
  std::unique_ptr<Compositor> desktop(new Compositor);
  return desktop->start({"weston", "--backend=headless-backend.so", "--use-pixman", "--no-config",
                         "--width=1280", "--height=1024", "--socket=weston"},
                        "weston")
             ? std::move(desktop)
             : nullptr;
}

Compositor::~Compositor() {
  if (parts_->process != nullptr) {
    g_subprocess_send_signal(parts_->process, SIGTERM);
    g_subprocess_wait(parts_->process, nullptr, nullptr);
    g_object_unref(parts_->process);
  }
}

bool Compositor::start(const std::vector<std::string>& command, const std::string& socket) {
  std::vector<const char*> arguments;
  for (const auto& each : command) {
    arguments.push_back(each.c_str());
  }
  arguments.push_back(nullptr);
  GSubprocessLauncher* launcher = g_subprocess_launcher_new(static_cast<GSubprocessFlags>(
      G_SUBPROCESS_FLAGS_STDOUT_SILENCE | G_SUBPROCESS_FLAGS_STDERR_SILENCE));
  const char* folder = parts_->folder.path().c_str();
  for (const char* name : {"XDG_RUNTIME_DIR", "HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) {
    g_subprocess_launcher_setenv(launcher, name, folder, TRUE);
  }
  g_subprocess_launcher_setenv(launcher, "WLR_BACKENDS", "headless", TRUE);
  g_subprocess_launcher_setenv(launcher, "WLR_RENDERER", "pixman", TRUE);
  g_subprocess_launcher_setenv(launcher, "WLR_LIBINPUT_NO_DEVICES", "1", TRUE);
  g_subprocess_launcher_unsetenv(launcher, "DISPLAY");
  g_subprocess_launcher_unsetenv(launcher, "WAYLAND_DISPLAY");
  GError* error = nullptr;
  parts_->process = g_subprocess_launcher_spawnv(launcher, arguments.data(), &error);
  g_object_unref(launcher);
  if (parts_->process == nullptr) {
    std::fprintf(stderr, "%s: %s\n", arguments[0], error->message);
    g_error_free(error);
    return false;
  }
  parts_->socket = parts_->folder / socket;
  return waitUntil([this] { return std::filesystem::exists(parts_->socket); }, kStartLimit);
}

void Compositor::useInThisProcess() const {
  const char* folder = parts_->folder.path().c_str();
  for (const char* name : {"XDG_RUNTIME_DIR", "HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
                           "XDG_CACHE_HOME", "XDG_STATE_HOME"}) {
    setenv(name, folder, 1);
  }
  setenv("WAYLAND_DISPLAY", parts_->socket.c_str(), 1);
  setenv("GDK_BACKEND", "wayland", 1);
  setenv("NO_AT_BRIDGE", "1", 1);
  setenv("GSETTINGS_BACKEND", "memory", 1);
  setenv("GTK_THEME", "Adwaita", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
  unsetenv("DISPLAY");
}

}  // namespace qorix::test
