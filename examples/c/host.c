/* Shows a window and, on top of its text, the advertisement of a document.
 *
 *   cc host.c -o host $(pkg-config --cflags --libs qorix-gtk3-2.0)
 *   ./host URL SETTINGS
 *
 * URL is the address of the document, SETTINGS the file that keeps this host's settings. */

#include <qorix/qorix-gtk.h>
#include <stdio.h>

static void will_show(QorixManager *manager, QorixAdInfo *info, GtkWidget *host,
                      gboolean is_popup) {
  printf("will-show %d %s %dx%d\n", (int)qorix_ad_info_get_ad_id(info),
         is_popup ? "popup" : "banner", (int)qorix_ad_info_get_width(info),
         (int)qorix_ad_info_get_height(info));
}

static void did_close(QorixManager *manager, QorixAdInfo *info) {
  printf("did-close %d\n", (int)qorix_ad_info_get_ad_id(info));
}

static void open_iap(QorixManager *manager, QorixAdInfo *info, GtkWidget *host, gboolean is_popup,
                     QorixRect *frame, const gchar *url) {
  printf("open-iap %s\n", url);
}

static void triggering_navigation(QorixManager *manager, const gchar *element) {
  printf("triggering-navigation %s\n", element);
}

int main(int argc, char **argv) {
  gtk_init(&argc, &argv);
  if (argc != 3) {
    fprintf(stderr, "usage: host URL SETTINGS\n");
    return 2;
  }
  setvbuf(stdout, NULL, _IOLBF, 0);

  QorixInstallOptions *options = qorix_install_options_new("com.example.editor");
  g_object_set(options, "default-ad-file-url", argv[1], "settings-path", argv[2], NULL);
  QorixManager *manager = qorix_start(options);
  g_object_unref(options);
  if (manager == NULL) return 1; /* it has logged why */
  g_signal_connect(manager, "will-show", G_CALLBACK(will_show), NULL);
  g_signal_connect(manager, "did-close", G_CALLBACK(did_close), NULL);
  g_signal_connect(manager, "open-iap", G_CALLBACK(open_iap), NULL);
  g_signal_connect(manager, "triggering-navigation", G_CALLBACK(triggering_navigation), NULL);

  GtkWidget *overlay = gtk_overlay_new(); /* a banner can lie on top of its child */
  gtk_container_add(GTK_CONTAINER(overlay), gtk_text_view_new());
  GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  g_object_set(window, "title", "Host in C", "default-width", 600, "default-height", 300, NULL);
  gtk_container_add(GTK_CONTAINER(window), overlay);
  g_signal_connect(window, "destroy", gtk_main_quit, NULL);
  gtk_widget_show_all(window);

  qorix_manager_show_ad_of_default_url(manager, GTK_OVERLAY(overlay));
  gtk_main();
  return 0;
}
