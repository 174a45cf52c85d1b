#include "support/VirtualDisplay.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xrandr.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace qorix::test {

namespace {

struct CloseDisplay {
  void operator()(Display* display) const { XCloseDisplay(display); }
};
using Connection = std::unique_ptr<Display, CloseDisplay>;

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
  display->server_ = PrivateDisplay::start(options.width, options.height);
  if (display->server_ == nullptr || !display->divideIntoMonitors(options) ||
      !display->server_->startWindowManager(folder)) {
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
  const Connection display(XOpenDisplay(name().c_str()));
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
