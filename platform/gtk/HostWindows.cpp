#include "platform/gtk/HostWindows.h"

#include <gtk/gtk.h>

namespace qorix::gtk {

namespace {

// Null again when the widget is destroyed.
GtkWidget* notedWidget = nullptr;

bool canBeBelow(GtkWidget* candidate, GtkWindow* window) {
  GdkWindow* native = gtk_widget_get_window(candidate);
  return candidate != GTK_WIDGET(window) && native != nullptr &&
         gdk_window_get_window_type(native) == GDK_WINDOW_TOPLEVEL &&
         gtk_widget_get_mapped(candidate) != FALSE &&
         gtk_widget_in_destruction(candidate) == FALSE &&
         gtk_window_get_transient_for(GTK_WINDOW(candidate)) != window;
}

}  // namespace

void noteHostWidget(GtkWidget* widget) { g_set_weak_pointer(&notedWidget, widget); }

GtkWindow* hostWindowBelow(GtkWindow* window) {
  GtkWidget* noted = notedWidget == nullptr ? nullptr : gtk_widget_get_toplevel(notedWidget);
  GtkWindow* best = nullptr;
  GList* windows = gtk_window_list_toplevels();
  for (GList* each = windows; each != nullptr; each = each->next) {
    auto* candidate = static_cast<GtkWidget*>(each->data);
    if (!canBeBelow(candidate, window)) {
      continue;
    }
    if (gtk_window_is_active(GTK_WINDOW(candidate)) != FALSE) {
      best = GTK_WINDOW(candidate);
      break;
    }
    if (best == nullptr || candidate == noted) {
      best = GTK_WINDOW(candidate);
    }
  }
  g_list_free(windows);
  return best;
}

}  // namespace qorix::gtk
