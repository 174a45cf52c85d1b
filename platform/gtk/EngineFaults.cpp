#include "platform/gtk/EngineFaults.h"

#include <webkit2/webkit2.h>

namespace qorix::gtk {

namespace {

// Asked to draw a part of its view, the engine draws the part as far from the other end, top for
// bottom. So it is asked for all of the view, and what is needed is taken from that.
gboolean drawAll(GtkWidget* widget, cairo_t* cairo) {
  const GdkRectangle all = {0, 0, gtk_widget_get_allocated_width(widget),
                            gtk_widget_get_allocated_height(widget)};
  GdkRectangle part;
  if (gdk_cairo_get_clip_rectangle(cairo, &part) == FALSE ||
      gdk_rectangle_equal(&part, &all) != FALSE) {
    return FALSE;
  }
  const double scale = gtk_widget_get_scale_factor(widget);
  const cairo_rectangle_t extents = {0, 0, all.width * scale, all.height * scale};
  cairo_surface_t* recording = cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents);
  cairo_surface_set_device_scale(recording, scale, scale);
  cairo_t* recorder = cairo_create(recording);
  GTK_WIDGET_GET_CLASS(widget)->draw(widget, recorder);
  cairo_destroy(recorder);
  cairo_set_source_surface(cairo, recording, 0, 0);
  cairo_paint(cairo);
  cairo_surface_destroy(recording);
  return TRUE;
}

// When the host moves a view to another window, it loses its picture together with its native
// window, and a page that does not change is not painted again. A background colour that differs,
// and then does not, makes the engine paint.
void paintAnew(GtkWidget* widget, gpointer) {
  WebKitWebView* webView = WEBKIT_WEB_VIEW(widget);
  GdkRGBA color;
  webkit_web_view_get_background_color(webView, &color);
  GdkRGBA other = color;
  other.blue = color.blue > 0.5 ? color.blue - 0.01 : color.blue + 0.01;
  webkit_web_view_set_background_color(webView, &other);
  webkit_web_view_set_background_color(webView, &color);
}

}  // namespace

void correctPainting(WebKitWebView* webView) {
  g_signal_connect(webView, "draw", G_CALLBACK(drawAll), nullptr);
  g_signal_connect_after(webView, "map", G_CALLBACK(paintAnew), nullptr);
}

}  // namespace qorix::gtk
