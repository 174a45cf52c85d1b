#include "platform/gtk/Desktop.h"

#include <gdk/gdk.h>
#include <gdk/gdkx.h>

#include <cstdint>
#include <string>
#include <vector>

#include <qorix/platform/Log.h>

#include "platform/gtk/Coordinates.h"

namespace qorix::gtk {

namespace {

constexpr const char* kDecorationsProperty = "_NET_FRAME_EXTENTS";
constexpr const char* kDecorationsRequest = "_NET_REQUEST_FRAME_EXTENTS";

std::vector<GdkRectangle> monitorGeometries() {
  GdkDisplay* display = gdk_display_get_default();
  std::vector<GdkRectangle> geometries;
  for (int i = 0; display != nullptr && i < gdk_display_get_n_monitors(display); ++i) {
    GdkRectangle geometry;
    gdk_monitor_get_geometry(gdk_display_get_monitor(display, i), &geometry);
    geometries.push_back(geometry);
  }
  return geometries;
}

class MonitorScreen : public Screen {
 public:
  explicit MonitorScreen(GdkMonitor* monitor) {
    GdkRectangle area;
    gdk_monitor_get_workarea(monitor, &area);
    visibleFrame_ = flipped(area, desktopHeight());
  }

  Rect visibleFrame() const override { return visibleFrame_; }

 private:
  Rect visibleFrame_;
};

}  // namespace

bool hasDisplay(const char* what) {
  const bool isThere = gdk_display_get_default() != nullptr;
  if (!isThere) {
    logLine(std::string("ZAM There is no display: no ") + what + " can be made");
  }
  return isThere;
}

// Not the root window's height: there is no such window on Wayland.
int desktopHeight() { return lowestEdge(monitorGeometries()); }

std::shared_ptr<Screen> screenOfFrame(const Rect& frame) {
  const auto monitors = monitorGeometries();
  const int index = monitorOf(flipped(frame, lowestEdge(monitors)), monitors);
  return index < 0 ? nullptr
                   : std::make_shared<MonitorScreen>(
                         gdk_display_get_monitor(gdk_display_get_default(), index));
}

std::shared_ptr<Screen> primaryScreen() {
  GdkDisplay* display = gdk_display_get_default();
  if (display == nullptr) {
    return nullptr;
  }
  GdkMonitor* monitor = gdk_display_get_primary_monitor(display);
  if (monitor == nullptr) {
    monitor = gdk_display_get_monitor(display, 0);
  }
  return monitor == nullptr ? nullptr : std::make_shared<MonitorScreen>(monitor);
}

std::optional<Decorations> decorationsOfWindow(GdkWindow* window) {
  if (!GDK_IS_X11_WINDOW(window)) {
    return std::nullopt;
  }
  guchar* data = nullptr;
  gint length = 0;
  const bool found =
      gdk_property_get(window, gdk_atom_intern_static_string(kDecorationsProperty),
                       gdk_atom_intern_static_string("CARDINAL"), 0, 4 * sizeof(std::int32_t),
                       FALSE, nullptr, nullptr, &length, &data) != FALSE;
  std::optional<Decorations> decorations;
  // GDK returns items of 32 bits as longs.
  if (found && length == static_cast<gint>(4 * sizeof(long))) {
    const auto* extents = reinterpret_cast<const long*>(data);
    const double scale = gdk_window_get_scale_factor(window);
    const auto points = [&](int i) { return static_cast<double>(extents[i]) / scale; };
    decorations = Decorations{points(0), points(1), points(2), points(3)};
  }
  g_free(data);
  return decorations;
}

bool requestDecorations(GdkWindow* window) {
  if (!GDK_IS_X11_WINDOW(window) ||
      !gdk_x11_screen_supports_net_wm_hint(gdk_window_get_screen(window),
                                           gdk_atom_intern_static_string(kDecorationsRequest))) {
    return false;
  }
  GdkDisplay* display = gdk_window_get_display(window);
  Display* xDisplay = gdk_x11_display_get_xdisplay(display);
  XEvent request = {};
  request.xclient.type = ClientMessage;
  request.xclient.window = gdk_x11_window_get_xid(window);
  request.xclient.message_type =
      gdk_x11_get_xatom_by_name_for_display(display, kDecorationsRequest);
  request.xclient.format = 32;
  XSendEvent(xDisplay, gdk_x11_get_default_root_xwindow(), False,
             SubstructureRedirectMask | SubstructureNotifyMask, &request);
  XFlush(xDisplay);
  return true;
}

bool isAboutDecorations(const GdkEventProperty& event) {
  return event.state == GDK_PROPERTY_NEW_VALUE &&
         event.atom == gdk_atom_intern_static_string(kDecorationsProperty);
}

}  // namespace qorix::gtk
