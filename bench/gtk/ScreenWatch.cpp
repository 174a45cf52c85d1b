#include "gtk/ScreenWatch.h"

#include <X11/Xutil.h>
#include <gtk/gtk.h>

#include <cstdio>
#include <cstdlib>

namespace qorix::bench {

ScreenWatch::ScreenWatch(std::uint32_t color) : color_(color), thread_([this] { watch(); }) {}

ScreenWatch::~ScreenWatch() {
  isToEnd_ = true;
  thread_.join();
}

ScreenWatch::Clock::time_point ScreenWatch::waitForColor() {
  constexpr guint kLimit = 60'000;
  bool isLate = false;
  const guint limit = g_timeout_add(
      kLimit, [](gpointer late) { return *static_cast<bool*>(late) = true, G_SOURCE_REMOVE; },
      &isLate);
  while (!isSeen_) {
    if (isLate) {
      std::fprintf(stderr, "nothing was painted in time\n");
      std::_Exit(EXIT_FAILURE);
    }
    gtk_main_iteration();  // the watching thread ends the wait
  }
  g_source_remove(limit);
  return seenAt_;
}

void ScreenWatch::watch() {
  Display* display = XOpenDisplay(nullptr);
  while (!isToEnd_ && !isSeen_) {
    if (isOnScreen(display)) {
      seenAt_ = Clock::now();
      isSeen_ = true;
      g_main_context_wakeup(nullptr);
    } else {
      std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
  }
  XCloseDisplay(display);
}

bool ScreenWatch::isOnScreen(Display* display) {
  constexpr int kStep = 48;
  const int screen = DefaultScreen(display);
  const int width = DisplayWidth(display, screen);
  for (int y = 0; y < DisplayHeight(display, screen); y += kStep) {
    XImage* row = XGetImage(display, RootWindow(display, screen), 0, y,
                            static_cast<unsigned>(width), 1, AllPlanes, ZPixmap);
    bool isFound = false;
    for (int x = 0; x < width && !isFound; x += kStep) {
      isFound = (XGetPixel(row, x, 0) & 0xFFFFFF) == color_;
      place_ = {x, y};
    }
    XDestroyImage(row);
    if (isFound) {
      return true;
    }
  }
  return false;
}

}  // namespace qorix::bench
