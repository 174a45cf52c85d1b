// Two Wayland compositors. Both have their pointer and keyboard from a virtual X display, because a
// seat without such devices offers its clients none. Weston's screen is that display; sway's is its
// own, without hardware, and is seen and clicked with sway's own means.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <utility>
#include <vector>

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"
#include "support/TestDesktop.h"
#include "support/VirtualDisplay.h"
#include "support/Wait.h"

namespace qorix::test {

namespace {

constexpr unsigned kOrdinaryUser = 65534;  // sway refuses to run as root

class Compositor : public ChildProcess {
 public:
  using ChildProcess::ChildProcess;

 private:
  void takeLine(const std::string& /*line*/) override {}
};

class WaylandDesktop : public TestDesktop {
 public:
  void useInThisProcess() const override {
    display_->useInThisProcess();
    // Clients keep a runtime folder of their own: the compositor's may belong to another user.
    const std::filesystem::path runtimeFolder(std::getenv("XDG_RUNTIME_DIR"));
    std::error_code existsAlready;
    std::filesystem::create_symlink(folder_.path() / socket_, runtimeFolder / socket_,
                                    existsAlready);
    setenv("WAYLAND_DISPLAY", socket_.c_str(), 1);
    setenv("GDK_BACKEND", "wayland", 1);
  }

 protected:
  WaylandDesktop(std::string socket, const VirtualDisplayOptions& options)
      : socket_(std::move(socket)), display_(VirtualDisplay::start(options)) {}

  bool hasDisplay() const { return display_ != nullptr; }
  const VirtualDisplay& display() const { return *display_; }
  std::string file(const std::string& name) const { return folder_ / name; }

  /// Starts the compositor and waits for a file in its runtime folder.
  bool startCompositor(const std::vector<std::string>& variables,
                       const std::vector<std::string>& command, const std::string& awaited) {
    std::vector<std::string> all{"/usr/bin/env", "XDG_RUNTIME_DIR=" + folder_.path().string(),
                                 "DISPLAY=" + display_->name()};
    all.insert(all.end(), variables.begin(), variables.end());
    all.insert(all.end(), command.begin(), command.end());
    compositor_ = std::make_unique<Compositor>(all);
    const auto isThere = [&] { return std::filesystem::exists(file(awaited)); };
    return waitUntil(isThere, kPatience);
  }

 private:
  const std::string socket_;
  const TemporaryFolder folder_;
  const std::unique_ptr<VirtualDisplay> display_;
  std::unique_ptr<Compositor> compositor_;
};

class Weston : public WaylandDesktop {
 public:
  Weston()
      : WaylandDesktop(
            "wayland-0",
            {.width = kWidth + 2 * kPlaceBeside, .height = kHeight, .hasWindowManager = false}) {}

  bool start() {
    if (!hasDisplay()) {
      return false;
    }
    std::ofstream(file("weston.ini"))
        << "[core]\nidle-time=0\n[shell]\npanel-position=none\nbackground-color=0xff000000\n"
           "animation=none\nclose-animation=none\nstartup-animation=none\nlocking=false\n"
           "[input-method]\npath=\n";
    return startCompositor(
        {},
        {"weston", "--backend=x11-backend.so", "--use-pixman", "--width=1280", "--height=1024",
         "--socket=wayland-0", "--config=" + file("weston.ini"), "--log=" + file("log")},
        "wayland-0");
  }

  std::unique_ptr<Picture> picture() const override { return takePicture(display().name()); }

  bool click(int x, int y, int button) const override {
    // Weston follows a pointer by its steps and misses some at its start. Where the pointer enters
    // its window it knows.
    const std::string command = "xdotool mousemove " + std::to_string(kWidth + kPlaceBeside) +
                                " 0 mousemove " + std::to_string(x) + ' ' + std::to_string(y) +
                                " click " + std::to_string(button);
    return std::system(command.c_str()) == 0;
  }

 private:
  static constexpr int kWidth = 1280;
  static constexpr int kHeight = 1024;
  static constexpr int kPlaceBeside = 8;  // for the pointer, beside the compositor's window
};

class Sway : public WaylandDesktop {
 public:
  /// Its outputs, from left to right, have these scales and 1000 x 800 points each.
  explicit Sway(std::vector<int> scales)
      : WaylandDesktop("wayland-1", {.hasWindowManager = false}), scales_(std::move(scales)) {}

  bool start() {
    if (!hasDisplay()) {
      return false;
    }
    writeConfiguration();
    std::vector<std::string> command{"sway", "--config", file("config")};
    if (getuid() == 0) {
      if (chown(file("").c_str(), kOrdinaryUser, kOrdinaryUser) != 0) {
        return false;
      }
      const std::string user = std::to_string(kOrdinaryUser);
      command.insert(command.begin(), {"setpriv", "--reuid", user, "--regid", user,
                                       "--clear-groups", "--pdeathsig", "KILL"});
    }
    return startCompositor(
        {"HOME=" + file(""), "WLR_BACKENDS=headless,x11", "WLR_RENDERER=pixman",
         "WLR_HEADLESS_OUTPUTS=" + std::to_string(scales_.size()), "SWAYSOCK=" + file("control")},
        command, "ready");
  }

  void useInThisProcess() const override {
    WaylandDesktop::useInThisProcess();
    setenv("SWAYSOCK", file("control").c_str(), 1);  // for swaymsg
  }

  std::unique_ptr<Picture> picture() const override {
    const std::string name = file("picture.ppm");
    return succeeds("grim -t ppm " + name) ? readPicture(name) : nullptr;
  }

  bool click(int x, int y, int button) const override {
    const std::string name = "button" + std::to_string(button);
    return succeeds("swaymsg -q seat - cursor set " + std::to_string(x) + ' ' + std::to_string(y) +
                    ", seat - cursor press " + name + ", seat - cursor release " + name);
  }

  int scale() const override { return scales_.front(); }

 private:
  void writeConfiguration() const {
    std::ofstream stream(file("config"));
    stream << "xwayland disable\n"
              "output X11-1 disable\n"
              "default_floating_border normal\n"
              "for_window [app_id=\".*\"] floating enable\n"
              "exec touch "
           << file("ready") << "\n";
    for (std::size_t i = 0; i < scales_.size(); ++i) {
      stream << "output HEADLESS-" << i + 1 << " mode --custom " << 1000 * scales_[i] << "x"
             << 800 * scales_[i] << "@60Hz position " << 1000 * i << " 0 scale " << scales_[i]
             << "\n";
    }
  }

  static bool succeeds(const std::string& command) { return std::system(command.c_str()) == 0; }

  const std::vector<int> scales_;
};

template <class Desktop>
std::unique_ptr<TestDesktop> started(std::unique_ptr<Desktop> desktop) {
  if (desktop->start()) {
    return desktop;
  }
  std::fprintf(stderr, "A Wayland compositor cannot be started.\n");
  return nullptr;
}

}  // namespace

std::unique_ptr<TestDesktop> TestDesktop::startOnWayland(const std::string& name) {
  if (name == "weston") {
    return started(std::make_unique<Weston>());
  }
  if (name.starts_with("sway")) {
    const std::map<std::string, std::vector<int>> scales{
        {"sway", {1}}, {"sway-x2", {2}}, {"sway-two", {1, 2}}};
    if (const auto found = scales.find(name); found != scales.end()) {
      return started(std::make_unique<Sway>(found->second));
    }
  }
  std::fprintf(stderr, "There is no desktop called %s.\n", name.c_str());
  return nullptr;
}

}  // namespace qorix::test
