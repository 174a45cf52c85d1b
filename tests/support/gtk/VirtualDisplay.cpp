#include "support/VirtualDisplay.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xrandr.h>
#include <fcntl.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace qorix::test {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kStartTimeLimit = std::chrono::seconds(30);

struct CloseDisplay {
  void operator()(Display* display) const { XCloseDisplay(display); }
};
using Connection = std::unique_ptr<Display, CloseDisplay>;

int millisecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

// Starts a program that ends with this thread and is silent. `inherited` stays open in it.
pid_t startProgram(const std::vector<std::string>& command,
                   const std::vector<std::pair<std::string, std::string>>& environment) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const auto& each : command) {
    arguments.push_back(const_cast<char*>(each.c_str()));
  }
  arguments.push_back(nullptr);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child != 0) {
    return child;
  }
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(127);
  }
  for (const auto& [name, value] : environment) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(nowhere, STDIN_FILENO);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

// The line that the other end of the pipe writes, without its end; empty when none comes in time.
std::string readLine(int pipe, Clock::time_point deadline) {
  std::string line;
  pollfd readable = {pipe, POLLIN, 0};
  char next = 0;
  while (poll(&readable, 1, millisecondsUntil(deadline)) > 0 && read(pipe, &next, 1) == 1) {
    if (next == '\n') {
      return line;
    }
    line += next;
  }
  return {};
}

bool hasWindowManager(Display* display) {
  Atom type = None;
  int format = 0;
  unsigned long count = 0;
  unsigned long rest = 0;
  unsigned char* data = nullptr;
  XGetWindowProperty(display, DefaultRootWindow(display),
                     XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False), 0, 1, False,
                     XA_WINDOW, &type, &format, &count, &rest, &data);
  if (data != nullptr) {
    XFree(data);
  }
  return count == 1;
}

}  // namespace

Picture::Picture(int width, int height, std::vector<std::uint8_t> rgb)
    : width_(width), height_(height), rgb_(std::move(rgb)) {}

Pixel Picture::at(int x, int y) const {
  const auto first = 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                          static_cast<std::size_t>(x));
  return {rgb_.at(first), rgb_.at(first + 1), rgb_.at(first + 2)};
}

bool Picture::writePng(const std::filesystem::path& file) const {
  GdkPixbuf* pixels = gdk_pixbuf_new_from_data(rgb_.data(), GDK_COLORSPACE_RGB, FALSE, 8, width_,
                                               height_, 3 * width_, nullptr, nullptr);
  const bool isWritten = gdk_pixbuf_save(pixels, file.c_str(), "png", nullptr, nullptr) != FALSE;
  g_object_unref(pixels);
  return isWritten;
}

std::unique_ptr<Picture> readPicture(const std::filesystem::path& file) {
  GdkPixbuf* pixbuf = gdk_pixbuf_new_from_file(file.c_str(), nullptr);
  if (pixbuf == nullptr) {
    return nullptr;
  }
  const int width = gdk_pixbuf_get_width(pixbuf);
  const int height = gdk_pixbuf_get_height(pixbuf);
  const int channels = gdk_pixbuf_get_n_channels(pixbuf);
  const guint8* pixels = gdk_pixbuf_read_pixels(pixbuf);
  std::vector<std::uint8_t> rgb;
  rgb.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
  for (int y = 0; y < height; ++y) {
    const guint8* row = pixels + static_cast<std::ptrdiff_t>(y) * gdk_pixbuf_get_rowstride(pixbuf);
    for (std::ptrdiff_t x = 0; x < width; ++x) {
      rgb.insert(rgb.end(), row + x * channels, row + x * channels + 3);
    }
  }
  g_object_unref(pixbuf);
  return std::make_unique<Picture>(width, height, std::move(rgb));
}

PixelBox boxOfColor(const Picture& picture, const Pixel& color) {
  int left = picture.width();
  int right = -1;
  int top = picture.height();
  int bottom = -1;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      if (picture.at(x, y) == color) {
        left = std::min(left, x);
        right = std::max(right, x);
        top = std::min(top, y);
        bottom = std::max(bottom, y);
      }
    }
  }
  return right < 0 ? PixelBox() : PixelBox{left, top, right - left + 1, bottom - top + 1};
}

std::unique_ptr<Picture> takePicture(const std::string& name) {
  const Connection display(XOpenDisplay(name.c_str()));
  if (display == nullptr) {
    return nullptr;
  }
  const int width = DisplayWidth(display.get(), DefaultScreen(display.get()));
  const int height = DisplayHeight(display.get(), DefaultScreen(display.get()));
  XImage* image =
      XGetImage(display.get(), DefaultRootWindow(display.get()), 0, 0, static_cast<unsigned>(width),
                static_cast<unsigned>(height), AllPlanes, ZPixmap);
  if (image == nullptr) {
    return nullptr;
  }
  std::vector<std::uint8_t> rgb;
  rgb.reserve(3 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const unsigned long pixel = XGetPixel(image, x, y);
      for (const int shift : {16, 8, 0}) {
        rgb.push_back(static_cast<std::uint8_t>((pixel >> shift) & 0xFF));
      }
    }
  }
  XDestroyImage(image);
  return std::make_unique<Picture>(width, height, std::move(rgb));
}

std::unique_ptr<VirtualDisplay> VirtualDisplay::start(const VirtualDisplayOptions& options) {
  std::string folder = (std::filesystem::temp_directory_path() / "qorix-display-XXXXXX").string();
  std::unique_ptr<VirtualDisplay> display(new VirtualDisplay);
  if (mkdtemp(folder.data()) == nullptr) {
    std::fprintf(stderr, "No folder for a virtual display.\n");
    return nullptr;
  }
  display->folder_ = folder;
  if (!display->startServer(options) || !display->divideIntoMonitors(options) ||
      !display->startWindowManager()) {
    std::fprintf(stderr, "A virtual display cannot be started.\n");
    return nullptr;
  }
  return display;
}

VirtualDisplay::~VirtualDisplay() {
  std::reverse(children_.begin(), children_.end());
  for (const pid_t child : children_) {
    kill(child, SIGTERM);
    waitpid(child, nullptr, 0);
  }
  std::error_code ignored;
  if (!folder_.empty()) {
    std::filesystem::remove_all(folder_, ignored);
  }
}

bool VirtualDisplay::startServer(const VirtualDisplayOptions& options) {
  int ends[2];
  if (pipe(ends) != 0) {
    return false;
  }
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
  const std::string size =
      std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
  children_.push_back(startProgram({"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                    size, "-nolisten", "tcp", "-noreset"},
                                   {}));
  ::close(ends[1]);
  const std::string number = readLine(ends[0], Clock::now() + kStartTimeLimit);
  ::close(ends[0]);
  name_ = ":" + number;
  return !number.empty();
}

bool VirtualDisplay::divideIntoMonitors(const VirtualDisplayOptions& options) const {
  if (options.monitors == 1) {
    return true;
  }
  const Connection display(XOpenDisplay(name_.c_str()));
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

bool VirtualDisplay::startWindowManager() {
  const Connection display(XOpenDisplay(name_.c_str()));
  if (display == nullptr) {
    return false;
  }
  XSelectInput(display.get(), DefaultRootWindow(display.get()), PropertyChangeMask);
  children_.push_back(startProgram({"openbox", "--sm-disable"}, {{"DISPLAY", name_},
                                                                 {"HOME", folder_.string()},
                                                                 {"XDG_CONFIG_HOME", folder_},
                                                                 {"XDG_CACHE_HOME", folder_},
                                                                 {"XDG_DATA_HOME", folder_}}));
  const auto deadline = Clock::now() + kStartTimeLimit;
  while (!hasWindowManager(display.get())) {
    if (XPending(display.get()) == 0) {
      pollfd connection = {ConnectionNumber(display.get()), POLLIN, 0};
      if (poll(&connection, 1, millisecondsUntil(deadline)) <= 0) {
        return false;
      }
    }
    while (XPending(display.get()) > 0) {
      XEvent event;
      XNextEvent(display.get(), &event);
    }
  }
  return true;
}

void VirtualDisplay::useInThisProcess() const {
  setenv("DISPLAY", name_.c_str(), 1);
  setenv("GDK_BACKEND", "x11", 1);
  setenv("NO_AT_BRIDGE", "1", 1);
  setenv("GSETTINGS_BACKEND", "memory", 1);
  setenv("GTK_THEME", "Adwaita", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
  unsetenv("WAYLAND_DISPLAY");
  for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                               "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
    const auto place = folder_ / variable;
    std::filesystem::create_directories(place);
    std::filesystem::permissions(place, std::filesystem::perms::owner_all);
    setenv(variable, place.c_str(), 1);
  }
}

}  // namespace qorix::test
