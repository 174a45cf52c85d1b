#include "tools/preview/HostWindow.h"

#include <qorix/gtk3.h>

namespace qorix::tools::preview {

namespace {

constexpr const char* kText =
    "The quick brown fox\n\n"
    "Pack my box with five dozen liquor jugs.\n"
    "Sphinx of black quartz, judge my vow.\n"
    "How vexingly quick daft zebras jump!\n";

GtkWidget* createMenuBar() {
  GtkWidget* quit = gtk_menu_item_new_with_mnemonic("_Quit");
  g_signal_connect(quit, "activate", G_CALLBACK(gtk_main_quit), nullptr);
  GtkWidget* menu = gtk_menu_new();
  gtk_menu_shell_append(GTK_MENU_SHELL(menu), quit);
  GtkWidget* file = gtk_menu_item_new_with_mnemonic("_File");
  gtk_menu_item_set_submenu(GTK_MENU_ITEM(file), menu);
  GtkWidget* bar = gtk_menu_bar_new();
  gtk_menu_shell_append(GTK_MENU_SHELL(bar), file);
  return bar;
}

GtkWidget* createText() {
  constexpr int kMargin = 12;
  GtkWidget* text = gtk_text_view_new();
  gtk_text_view_set_left_margin(GTK_TEXT_VIEW(text), kMargin);
  gtk_text_view_set_top_margin(GTK_TEXT_VIEW(text), kMargin);
  gtk_text_buffer_set_text(gtk_text_view_get_buffer(GTK_TEXT_VIEW(text)), kText, -1);
  GtkWidget* scroller = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_container_add(GTK_CONTAINER(scroller), text);
  return scroller;
}

}  // namespace

HostWindow createHostWindow(const std::string& title, int viewWidth, int viewHeight) {
  GtkWidget* overlay = gtk_overlay_new();
  gtk_container_add(GTK_CONTAINER(overlay), createText());
  GtkWidget* menuBar = createMenuBar();
  GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_pack_start(GTK_BOX(content), menuBar, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(content), overlay, TRUE, TRUE, 0);
  gtk_widget_show_all(content);

  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(window), title.c_str());
  gtk_container_add(GTK_CONTAINER(window), content);
  int menuBarHeight = 0;
  gtk_widget_get_preferred_height(menuBar, nullptr, &menuBarHeight);
  gtk_window_set_default_size(GTK_WINDOW(window), viewWidth, menuBarHeight + viewHeight);
  return {window, qorix::gtk::viewForOverlay(GTK_OVERLAY(overlay))};
}

}  // namespace qorix::tools::preview
