#include "platform/gtk/Accessibility.h"

#include <gtk/gtk.h>

namespace qorix::gtk {

namespace {

constexpr const char* kPlainWord = "Advertisement";

AtkObject* describe(GtkWidget* widget, AtkRole role, const std::string& title) {
  AtkObject* accessible = gtk_widget_get_accessible(widget);
  atk_object_set_role(accessible, role);
  atk_object_set_name(accessible, title.empty() ? kPlainWord : title.c_str());
  return accessible;
}

}  // namespace

// A titled banner is still said to be an advertisement, and not a part of the host.
void describeHolder(GtkWidget* holder, const std::string& title) {
  atk_object_set_description(describe(holder, ATK_ROLE_PANEL, title), kPlainWord);
}

void describePopup(GtkWindow* window, const std::string& title) {
  describe(GTK_WIDGET(window), ATK_ROLE_DIALOG, title);
}

}  // namespace qorix::gtk
