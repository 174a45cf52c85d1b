// A host as its developer writes it. usage: editor URL
//
// It prints the advertisement's notifications and ends with its window.

#include <gtk/gtk.h>

#include <iostream>

#include <qorix/gtk3.h>
#include <qorix/qorix.h>

auto showAdvertisement(GtkOverlay* overlay, const char* address) {
  const auto manager = qorix::gtk::start({
      .bundleIdentifier = "com.example.editor",
      .defaultAdFileUrl = address,
  });
  manager->prepareAndShowAdByUsingMyAppWebServerURLWithHostView(
      qorix::gtk::viewForOverlay(overlay));
  return qorix::MyPushAdEvent::observe([](const qorix::MyPushAdEvent& event) {
    std::cout << event.name << " " << event.element.value_or("") << std::endl;
  });
}

int main(int argc, char** argv) {
  gtk_init(&argc, &argv);
  if (argc != 2) {
    std::cerr << "usage: editor URL\n";
    return 2;
  }
  GtkWidget* overlay = gtk_overlay_new();
  gtk_container_add(GTK_CONTAINER(overlay), gtk_text_view_new());
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_default_size(GTK_WINDOW(window), 800, 300);
  gtk_container_add(GTK_CONTAINER(window), overlay);
  g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
  gtk_widget_show_all(window);

  const auto observations = showAdvertisement(GTK_OVERLAY(overlay), argv[1]);
  gtk_main();
  return 0;
}
