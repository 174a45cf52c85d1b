#include "platform/gtk/StackedWindow.h"

#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include "platform/Guarded.h"
#include "platform/gtk/HostWindows.h"

namespace qorix::gtk {

void StackedWindow::keepAbove(GtkWindow* window) {
  if (window_ == nullptr && !GDK_IS_X11_DISPLAY(gtk_widget_get_display(GTK_WIDGET(window)))) {
    window_ = window;
    chooseParent();
  }
}

void StackedWindow::release() {
  if (window_ != nullptr) {
    setParent(nullptr);
    window_ = nullptr;
  }
}

void StackedWindow::chooseParent() {
  GtkWindow* parent = hostWindowBelow(window_);
  // A hidden parent is better than none: it may be shown again.
  if (parent != nullptr && parent != parent_) {
    setParent(parent);
  }
}

void StackedWindow::setParent(GtkWindow* parent) {
  if (parent_ != nullptr) {
    g_signal_handlers_disconnect_by_data(parent_, this);
  }
  parent_ = parent;
  gtk_window_set_transient_for(window_, parent);
  if (parent != nullptr) {
    g_signal_connect(parent, "unmap", G_CALLBACK(guarded<onParentUnmap>), this);
    g_signal_connect(parent, "map", G_CALLBACK(guarded<onParentMap>), this);
    g_signal_connect(parent, "destroy", G_CALLBACK(guarded<onParentDestroy>), this);
  }
}

void StackedWindow::onParentUnmap(GtkWidget* /*parent*/, void* self) {
  static_cast<StackedWindow*>(self)->chooseParent();
}

// The desktop has forgotten whom it was the parent of.
void StackedWindow::onParentMap(GtkWidget* parent, void* self) {
  auto* stacked = static_cast<StackedWindow*>(self);
  gtk_window_set_transient_for(stacked->window_, nullptr);
  gtk_window_set_transient_for(stacked->window_, GTK_WINDOW(parent));
}

void StackedWindow::onParentDestroy(GtkWidget* /*parent*/, void* self) {
  auto* stacked = static_cast<StackedWindow*>(self);
  stacked->setParent(nullptr);
  stacked->chooseParent();
}

}  // namespace qorix::gtk
