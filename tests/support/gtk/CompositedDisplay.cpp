#include "support/gtk/CompositedDisplay.h"

#include <X11/Xatom.h>

#include "tools/common/display/XConnection.h"

namespace qorix::test {

struct CompositedDisplay::Connection {
  tools::XConnection display;
};

CompositedDisplay::CompositedDisplay(const char* name)
    : connection_(std::make_unique<Connection>()) {
  connection_->display.reset(XOpenDisplay(name));
  Display* display = connection_->display.get();
  const ::Window root = DefaultRootWindow(display);
  const ::Window owner = XCreateSimpleWindow(display, root, 0, 0, 1, 1, 0, 0, 0);
  XSetSelectionOwner(display, XInternAtom(display, "_NET_WM_CM_S0", False), owner, CurrentTime);
  const Atom shadows = XInternAtom(display, "_GTK_FRAME_EXTENTS", False);
  XChangeProperty(display, root, XInternAtom(display, "_NET_SUPPORTED", False), XA_ATOM, 32,
                  PropModeAppend, reinterpret_cast<const unsigned char*>(&shadows), 1);
  XSync(display, False);
}

CompositedDisplay::~CompositedDisplay() = default;

}  // namespace qorix::test
