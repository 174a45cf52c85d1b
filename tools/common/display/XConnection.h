#pragma once

#include <X11/Xlib.h>

#include <memory>

namespace qorix::tools {

/// A connection to an X display, or null. Include it in sources only: Xlib defines macros with
/// common names.
struct CloseXConnection {
  void operator()(Display* display) const { XCloseDisplay(display); }
};
using XConnection = std::unique_ptr<Display, CloseXConnection>;

}  // namespace qorix::tools
