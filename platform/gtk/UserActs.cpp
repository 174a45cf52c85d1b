#include "platform/gtk/UserActs.h"

#include <gtk/gtk.h>

#include <initializer_list>

namespace qorix::gtk {

namespace {

double secondsOfLoop() { return static_cast<double>(g_get_monotonic_time()) / 1e6; }

}  // namespace

UserActs::UserActs(GtkWidget* widget) {
  for (const char* signal : {"button-release-event", "key-press-event", "touch-event"}) {
    g_signal_connect(widget, signal, G_CALLBACK(onEvent), this);
  }
}

void UserActs::stop(GtkWidget* widget) { g_signal_handlers_disconnect_by_data(widget, this); }

bool UserActs::take() {
  if (open_ == 0 || secondsOfLoop() - last_ > kLasts) {
    open_ = 0;
    return false;
  }
  --open_;
  return true;
}

int UserActs::onEvent(GtkWidget* /*widget*/, GdkEvent* event, void* self) {
  auto* acts = static_cast<UserActs*>(self);
  if (event->type == GDK_BUTTON_RELEASE || event->type == GDK_KEY_PRESS ||
      event->type == GDK_TOUCH_END) {
    const double now = secondsOfLoop();
    acts->open_ = (now - acts->last_ > kLasts ? 0 : acts->open_) + 1;
    acts->last_ = now;
  }
  return GDK_EVENT_PROPAGATE;
}

}  // namespace qorix::gtk
