#include "EditorWindow.h"

#include <qorix/gtk3.h>

namespace {

constexpr const char* kText =
    "The quick brown fox\n\n"
    "Pack my box with five dozen liquor jugs.\n"
    "Sphinx of black quartz, judge my vow.\n"
    "How vexingly quick daft zebras jump!\n";

GtkWidget* createMenuBar() {
  GtkWidget* quit = gtk_menu_item_new_with_mnemonic("_Quit");
  g_signal_connect(quit, "activate", G_CALLBACK(gtk_main_quit), nullptr);
  GtkWidget* fileMenu = gtk_menu_new();
  gtk_menu_shell_append(GTK_MENU_SHELL(fileMenu), quit);
  GtkWidget* file = gtk_menu_item_new_with_mnemonic("_File");
  gtk_menu_item_set_submenu(GTK_MENU_ITEM(file), fileMenu);
  GtkWidget* bar = gtk_menu_bar_new();
  gtk_menu_shell_append(GTK_MENU_SHELL(bar), file);
  return bar;
}

// A text view inside an overlay, in which a banner can lie on top of the text.
GtkWidget* createEditor() {
  GtkWidget* text = gtk_text_view_new();
  gtk_text_view_set_left_margin(GTK_TEXT_VIEW(text), 12);
  gtk_text_view_set_top_margin(GTK_TEXT_VIEW(text), 12);
  gtk_text_buffer_set_text(gtk_text_view_get_buffer(GTK_TEXT_VIEW(text)), kText, -1);
  GtkWidget* scroller = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_container_add(GTK_CONTAINER(scroller), text);
  GtkWidget* overlay = gtk_overlay_new();
  gtk_container_add(GTK_CONTAINER(overlay), scroller);
  return overlay;
}

}  // namespace

EditorWindow createEditorWindow(const std::string& title, int views, int viewWidth,
                                int viewHeight) {
  EditorWindow made;
  GtkWidget* editors = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_set_homogeneous(GTK_BOX(editors), TRUE);
  for (int i = 0; i < views; ++i) {
    GtkWidget* overlay = createEditor();
    gtk_container_add(GTK_CONTAINER(editors), overlay);
    gtk_widget_set_vexpand(overlay, TRUE);
    made.views.push_back(qorix::gtk::viewForOverlay(GTK_OVERLAY(overlay)));
  }
  GtkWidget* menuBar = createMenuBar();
  GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_container_add(GTK_CONTAINER(content), menuBar);
  gtk_container_add(GTK_CONTAINER(content), editors);
  gtk_widget_show_all(content);

  made.window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(made.window), title.c_str());
  gtk_container_add(GTK_CONTAINER(made.window), content);
  int menuBarHeight = 0;
  gtk_widget_get_preferred_height(menuBar, nullptr, &menuBarHeight);
  gtk_window_set_default_size(GTK_WINDOW(made.window), viewWidth,
                              menuBarHeight + views * viewHeight);
  return made;
}
