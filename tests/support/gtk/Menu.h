#pragma once

#include "support/gtk/GtkTest.h"

namespace qorix::test {

inline gboolean popUp(GtkWidget* /*widget*/, GdkEvent* press, gpointer menu) {
  gtk_menu_popup_at_pointer(GTK_MENU(menu), press);
  return TRUE;
}

/// Opens a menu the way that its user does.
inline GtkWidget* popUpMenu(const HostWindow& host) {
  GtkWidget* menu = gtk_menu_new();
  gtk_menu_shell_append(GTK_MENU_SHELL(menu), gtk_menu_item_new_with_label("Item"));
  gtk_widget_show_all(menu);
  GtkWidget* area = gtk_bin_get_child(GTK_BIN(host.overlay()));
  gtk_menu_attach_to_widget(GTK_MENU(menu), area, nullptr);
  g_signal_connect(area, "button-press-event", G_CALLBACK(popUp), menu);
  const GdkRectangle place = host.overlayOnScreen();
  run({"xdotool", "mousemove", std::to_string(place.x + 50), std::to_string(place.y + 50), "click",
       "3"});
  EXPECT_TRUE(waitFor([&] { return gtk_widget_get_mapped(menu) != FALSE; })) << "no menu";
  return menu;
}

}  // namespace qorix::test
