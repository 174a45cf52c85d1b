#include "support/VirtualDisplay.h"

#include <X11/extensions/Xrandr.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "tools/common/display/XConnection.h"

namespace qorix::test {

std::unique_ptr<VirtualDisplay> VirtualDisplay::start(const VirtualDisplayOptions& options) {
  std::string folder = (std::filesystem::temp_directory_path() / "qorix-display-XXXXXX").string();
  std::unique_ptr<VirtualDisplay> display(new VirtualDisplay);
  if (mkdtemp(folder.data()) == nullptr) {
    std::fprintf(stderr, "No folder for a virtual display.\n");
    return nullptr;
  }
  display->folder_ = folder;
  display->server_ = tools::PrivateDisplay::start(options.width, options.height);
  if (display->server_ == nullptr || !display->divideIntoMonitors(options) ||
      (options.hasWindowManager && !display->server_->startWindowManager(folder))) {
    std::fprintf(stderr, "A virtual display cannot be started.\n");
    return nullptr;
  }
  return display;
}

VirtualDisplay::~VirtualDisplay() {
  server_.reset();
  std::error_code ignored;
  if (!folder_.empty()) {
    std::filesystem::remove_all(folder_, ignored);
  }
}

const std::string& VirtualDisplay::name() const { return server_->name(); }

bool VirtualDisplay::divideIntoMonitors(const VirtualDisplayOptions& options) const {
  if (options.monitors == 1) {
    return true;
  }
  const tools::XConnection display(XOpenDisplay(name().c_str()));
  if (display == nullptr) {
    return false;
  }
  const Window root = DefaultRootWindow(display.get());
  XRRScreenResources* resources = XRRGetScreenResources(display.get(), root);
  const int width = options.width / options.monitors;
  for (int i = 0; i < options.monitors; ++i) {
    // The first takes the server's only output away from the monitor that covers everything.
    XRRMonitorInfo* monitor = XRRAllocateMonitor(display.get(), i == 0 ? 1 : 0);
    monitor->name = XInternAtom(display.get(), ("monitor-" + std::to_string(i)).c_str(), False);
    monitor->primary = i == 0 ? True : False;
    monitor->x = i * width;
    monitor->y = 0;
    monitor->width = width;
    monitor->height = options.height;
    monitor->mwidth = width / 4;
    monitor->mheight = options.height / 4;
    if (i == 0) {
      monitor->outputs[0] = resources->outputs[0];
    }
    XRRSetMonitor(display.get(), root, monitor);
    XRRFreeMonitors(monitor);
  }
  XRRFreeScreenResources(resources);
  XSync(display.get(), False);
  return true;
}

void VirtualDisplay::useInThisProcess() const {
  server_->useInThisProcess();
  for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                               "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
    const auto place = folder_ / variable;
    std::filesystem::create_directories(place);
    std::filesystem::permissions(place, std::filesystem::perms::owner_all);
    setenv(variable, place.c_str(), 1);
  }
}

}  // namespace qorix::test
