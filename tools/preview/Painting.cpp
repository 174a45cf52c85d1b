#include "tools/preview/Painting.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/gtk/WidgetView.h"

namespace qorix::tools::preview {

namespace {

constexpr guint kPause = 50;  // milliseconds between two looks
constexpr int kLooks = 60;    // a page that keeps moving is never the same in two pictures

struct DestroySurface {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, DestroySurface>;

/// What the widget shows in its window, whatever covers that.
Surface pictureOf(GtkWidget* widget) {
  const int scale = gtk_widget_get_scale_factor(widget);
  Surface picture(cairo_image_surface_create(CAIRO_FORMAT_ARGB32,
                                             gtk_widget_get_allocated_width(widget) * scale,
                                             gtk_widget_get_allocated_height(widget) * scale));
  cairo_surface_set_device_scale(picture.get(), scale, scale);
  cairo_t* cairo = cairo_create(picture.get());
  gtk_widget_draw(widget, cairo);
  cairo_destroy(cairo);
  cairo_surface_flush(picture.get());
  return picture;
}

bool differs(const unsigned char* a, const unsigned char* b) {
  constexpr int kTolerance = 32;  // the engine has more than one way to smooth an edge
  return std::mismatch(a, a + 4, b, [](int x, int y) {
           return std::abs(x - y) <= kTolerance;
         }).first != a + 4;
}

/// Whether `shown` has nearly everything that is in `page`, both being ARGB images.
bool showsPage(cairo_surface_t* shown, cairo_surface_t* page) {
  const int width = cairo_image_surface_get_width(page);
  const int height = cairo_image_surface_get_height(page);
  if (width != cairo_image_surface_get_width(shown) ||
      height != cairo_image_surface_get_height(shown)) {
    return false;
  }
  int painted = 0;
  int different = 0;
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    const auto* a = cairo_image_surface_get_data(page) + y * cairo_image_surface_get_stride(page);
    const auto* b = cairo_image_surface_get_data(shown) + y * cairo_image_surface_get_stride(shown);
    for (std::ptrdiff_t x = 0; x < width; ++x, a += 4, b += 4) {
      const bool isPainted = std::any_of(a, a + 4, [](unsigned char part) { return part != 0; });
      painted += isPainted ? 1 : 0;
      different += isPainted && differs(a, b) ? 1 : 0;
    }
  }
  return different <= painted / 50;
}

/// Compares the window with the engine's picture of the page until both are the same. The engine
/// sends no signal when a frame reaches the window.
class PaintingWatch {
 public:
  PaintingWatch(GtkWidget* webView, std::function<void()> done)
      : webView_(WEBKIT_WEB_VIEW(g_object_ref(webView))), done_(std::move(done)) {}
  ~PaintingWatch() { g_object_unref(webView_); }
  PaintingWatch(const PaintingWatch&) = delete;
  PaintingWatch& operator=(const PaintingWatch&) = delete;

  /// Ends the watch when it has called `done`, or when the page has gone.
  static void look(std::unique_ptr<PaintingWatch> watch) {
    WebKitWebView* webView = watch->webView_;
    webkit_web_view_get_snapshot(webView, WEBKIT_SNAPSHOT_REGION_VISIBLE,
                                 WEBKIT_SNAPSHOT_OPTIONS_TRANSPARENT_BACKGROUND, nullptr,
                                 pageIsKnown, watch.release());
  }

 private:
  static void pageIsKnown(GObject* /*webView*/, GAsyncResult* result, gpointer data) {
    std::unique_ptr<PaintingWatch> watch(static_cast<PaintingWatch*>(data));
    const Surface page(webkit_web_view_get_snapshot_finish(watch->webView_, result, nullptr));
    if (page == nullptr) {
      return;
    }
    ++watch->looks_;
    const Surface shown = pictureOf(GTK_WIDGET(watch->webView_));
    if (watch->looks_ == kLooks || showsPage(shown.get(), page.get())) {
      watch->done_();
      return;
    }
    g_timeout_add(kPause, lookAgain, watch.release());
  }

  static gboolean lookAgain(gpointer data) {
    look(std::unique_ptr<PaintingWatch>(static_cast<PaintingWatch*>(data)));
    return G_SOURCE_REMOVE;
  }

  WebKitWebView* webView_;
  std::function<void()> done_;
  int looks_ = 0;
};

}  // namespace

GtkWidget* widgetOf(const View& view) {
  return dynamic_cast<const gtk::NativeView&>(view).widget();
}

void whenPainted(const WebView& webView, std::function<void()> done) {
  if (GtkWidget* widget = widgetOf(webView)) {
    PaintingWatch::look(std::make_unique<PaintingWatch>(widget, std::move(done)));
  }
}

std::string savePicture(const View& view, const std::string& file) {
  GtkWidget* widget = widgetOf(view);
  GtkWidget* window = widget == nullptr ? nullptr : gtk_widget_get_toplevel(widget);
  if (window == nullptr || gtk_widget_is_visible(window) == FALSE || !GTK_IS_WINDOW(window)) {
    return "the advertisement is in no window";
  }
  const Surface picture = pictureOf(window);
  const cairo_status_t status = cairo_surface_write_to_png(picture.get(), file.c_str());
  return status == CAIRO_STATUS_SUCCESS ? "" : cairo_status_to_string(status);
}

}  // namespace qorix::tools::preview
