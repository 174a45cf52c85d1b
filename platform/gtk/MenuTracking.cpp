#include "platform/gtk/MenuTracking.h"

#include <gtk/gtk.h>

namespace qorix::gtk {

namespace {

void noteMenuItem(GtkWidget* widget, gpointer found) {
  auto* isFound = static_cast<bool*>(found);
  if (GTK_IS_MODEL_BUTTON(widget)) {
    *isFound = true;
  } else if (!*isFound && GTK_IS_CONTAINER(widget)) {
    gtk_container_forall(GTK_CONTAINER(widget), noteMenuItem, found);
  }
}

// A menu made from a model may be shown by a plain popover, which its items give away.
bool isMenu(GtkWidget* widget) {
  if (GTK_IS_MENU_SHELL(widget) || GTK_IS_POPOVER_MENU(widget)) {
    return true;
  }
  bool hasMenuItem = false;
  if (GTK_IS_POPOVER(widget)) {
    noteMenuItem(widget, &hasMenuItem);
  }
  return hasMenuItem;
}

}  // namespace

// An open menu has the grab of its window group.
bool isMenuTracked() {
  GList* windows = gtk_window_list_toplevels();
  bool isTracked = false;
  for (GList* each = windows; each != nullptr && !isTracked; each = each->next) {
    GtkWindowGroup* group = gtk_window_get_group(static_cast<GtkWindow*>(each->data));
    GtkWidget* grab = gtk_window_group_get_current_grab(group);
    isTracked = grab != nullptr && isMenu(grab);
  }
  g_list_free(windows);
  return isTracked;
}

}  // namespace qorix::gtk
