#include "support/gtk/GtkTest.h"

#include <gdk/gdkx.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "support/VirtualDisplay.h"
#include "support/gtk/CompositedDisplay.h"
#include "support/gtk/ScreenReader.h"

namespace qorix::test {

namespace {

class TwoMonitors : public TestDesktop {
 public:
  explicit TwoMonitors(std::unique_ptr<VirtualDisplay> display) : display_(std::move(display)) {}
  void useInThisProcess() const override { display_->useInThisProcess(); }
  std::unique_ptr<Picture> picture() const override { return takePicture(display_->name()); }
  bool tellsPlaces() const override { return true; }

 private:
  const std::unique_ptr<VirtualDisplay> display_;
};

std::unique_ptr<TestDesktop>& theDesktop() {
  static std::unique_ptr<TestDesktop> desktop;
  return desktop;
}

GLogWriterOutput failOnWarnings(GLogLevelFlags level, const GLogField* fields, gsize count,
                                gpointer /*data*/) {
  if ((level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING)) != 0) {
    for (gsize i = 0; i < count; ++i) {
      if (std::string(fields[i].key) == "MESSAGE") {
        ADD_FAILURE() << "GLib: " << static_cast<const char*>(fields[i].value);
      }
    }
  }
  return G_LOG_WRITER_HANDLED;
}

bool isInTestName(const char* part) {
  return testing::GTEST_FLAG(filter).find(part) != std::string::npos;
}

std::unique_ptr<TestDesktop> startDesktopOfTestName() {
  if (isInTestName(".onTwoMonitors")) {
    auto display = VirtualDisplay::start({.width = 1600, .height = 900, .monitors = 2});
    return display == nullptr ? nullptr : std::make_unique<TwoMonitors>(std::move(display));
  }
  if (isInTestName("UnderWeston")) {
    return TestDesktop::startOnWayland("weston");
  }
  if (isInTestName(".onTwoOutputs")) {
    return TestDesktop::startOnWayland("sway-two");
  }
  return isInTestName("WaylandWindowTest.") ? TestDesktop::startOnWayland("sway")
                                            : TestDesktop::start();
}

void useOptionsOfTestName() {
  if (isInTestName(".onAFineScreen")) {
    setenv("GDK_SCALE", "2", 1);
  }
  if (isInTestName("WithClientDecorations")) {
    // Never destroyed: the display ends first.
    static auto& composited = *new CompositedDisplay(std::getenv("DISPLAY"));
    static_cast<void>(composited);
    setenv("GTK_CSD", "1", 1);
  }
  if (isInTestName(".tellsTheCompositor")) {
    setenv("WAYLAND_DEBUG", "client", 1);  // what is sent is written to standard error
  }
}

gboolean paint(GtkWidget* /*area*/, cairo_t* cairo, gpointer color) {
  const auto* pixel = static_cast<const Pixel*>(color);
  cairo_set_source_rgb(cairo, pixel->red / 255.0, pixel->green / 255.0, pixel->blue / 255.0);
  cairo_paint(cairo);
  return TRUE;
}

}  // namespace

bool startDesktop() {
  theDesktop() = startDesktopOfTestName();
  if (theDesktop() != nullptr) {
    theDesktop()->useInThisProcess();
    useOptionsOfTestName();
  }
  if (isInTestName("ScreenReaderTest.")) {
    static const AssistiveBus bus;
  }
  return theDesktop() != nullptr;
}

const TestDesktop& desktop() { return *theDesktop(); }

Picture screenPicture() {
  gdk_display_sync(gdk_display_get_default());
  const auto picture = desktop().picture();
  return picture == nullptr ? Picture() : *picture;
}

Pixel colorAt(int x, int y) {
  if (desktop().tellsPlaces()) {
    gdk_display_sync(gdk_display_get_default());
    return takePicture(std::getenv("DISPLAY"), PixelBox{x, y, 1, 1})->at(0, 0);
  }
  return screenPicture().at(x * desktop().scale(), y * desktop().scale());
}

GdkRectangle placeOf(const Pixel& color) {
  const PixelBox box = screenPicture().boxOf(color);
  const int scale = desktop().scale();
  // A part of a point shows in the rectangle: it is no multiple of the scale.
  const auto points = [scale](int pixels) {
    return pixels % scale == 0 ? pixels / scale : -1 - pixels;
  };
  return {points(box.x), points(box.y), points(box.width), points(box.height)};
}

void clickOn(int x, int y, int button) {
  EXPECT_TRUE(desktop().click(x, y, button)) << "at " << x << ", " << y;
}

bool waitFor(const std::function<bool()>& condition, double seconds) {
  const gint64 deadline = g_get_monotonic_time() + static_cast<gint64>(seconds * 1e6);
  // Some conditions change without an event of this process: the loop looks at them now and then,
  // when everything else is done.
  const guint timer = g_timeout_add_full(
      G_PRIORITY_LOW, 10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
  bool holds = condition();
  while (!holds && g_get_monotonic_time() < deadline) {
    g_main_context_iteration(nullptr, TRUE);
    holds = condition();
  }
  g_source_remove(timer);
  return holds;
}

void serveLoop() {
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
}

std::string run(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const auto& each : command) {
    arguments.push_back(const_cast<char*>(each.c_str()));
  }
  arguments.push_back(nullptr);
  gchar* output = nullptr;
  gint status = -1;
  GError* error = nullptr;
  if (g_spawn_sync(nullptr, arguments.data(), nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr,
                   &output, nullptr, &status, &error) == FALSE) {
    ADD_FAILURE() << command[0] << ": " << error->message;
    g_error_free(error);
    return {};
  }
  EXPECT_EQ(status, 0) << command[0];
  std::string text(output);
  g_free(output);
  return text;
}

GtkWidget* newColoredArea(const Pixel& color, int minimalWidth, int minimalHeight) {
  GtkWidget* area = gtk_drawing_area_new();
  gtk_widget_set_size_request(area, minimalWidth, minimalHeight);
  g_signal_connect_data(
      area, "draw", G_CALLBACK(paint), new Pixel(color),
      [](gpointer data, GClosure*) { delete static_cast<Pixel*>(data); }, GConnectFlags{});
  return area;
}

HostWindow::HostWindow(int width, int height)
    : window_(GTK_WINDOW(gtk_window_new(GTK_WINDOW_TOPLEVEL))),
      overlay_(GTK_OVERLAY(gtk_overlay_new())) {
  gtk_container_add(GTK_CONTAINER(overlay_), newColoredArea(kGreen));
  GtkWidget* grid = gtk_grid_new();
  gtk_grid_attach(GTK_GRID(grid), newColoredArea(kYellow, 40, 40), 0, 0, 3, 1);
  gtk_grid_attach(GTK_GRID(grid), newColoredArea(kYellow, 40, 40), 0, 1, 1, 1);
  gtk_grid_attach(GTK_GRID(grid), GTK_WIDGET(overlay_), 1, 1, 1, 1);
  gtk_grid_attach(GTK_GRID(grid), newColoredArea(kYellow, 40, 40), 2, 1, 1, 1);
  gtk_grid_attach(GTK_GRID(grid), newColoredArea(kYellow, 40, 40), 0, 2, 3, 1);
  gtk_widget_set_hexpand(GTK_WIDGET(overlay_), TRUE);
  gtk_widget_set_vexpand(GTK_WIDGET(overlay_), TRUE);
  gtk_container_add(GTK_CONTAINER(window_), grid);
  g_signal_connect(window_, "destroy", G_CALLBACK(gtk_widget_destroyed), &window_);
  g_signal_connect(overlay_, "destroy", G_CALLBACK(gtk_widget_destroyed), &overlay_);
  gtk_window_set_title(window_, "Host");
  gtk_window_resize(window_, width + 80, height + 80);
}

HostWindow::~HostWindow() { destroy(); }

void HostWindow::show() {
  if (GDK_IS_X11_DISPLAY(gdk_display_get_default()) && desktop().scale() > 1) {
    // A window manager may put a window between two points.
    gtk_window_set_gravity(window_, GDK_GRAVITY_STATIC);
    gtk_window_move(window_, 100, 100);
  }
  gtk_widget_show_all(GTK_WIDGET(window_));
  EXPECT_TRUE(waitFor([this] {
    const bool isSeen = isOnScreen();
    const bool isActive = gtk_window_is_active(window_) != FALSE;
    if (isSeen && !isActive && desktop().tellsPlaces()) {  // asked for before it could be had
      gtk_window_present_with_time(
          window_, gdk_x11_get_server_time(gtk_widget_get_window(GTK_WIDGET(window_))));
    }
    return isSeen && isActive;
  })) << "the host's window does not appear";
}

void HostWindow::resizeOverlay(int width, int height) {
  gtk_window_resize(window_, width + 80, height + 80);
  EXPECT_TRUE(waitFor([&] {
    const GdkRectangle place = overlayOnScreen();
    return place.width == width && place.height == height && isOnScreen();
  })) << "the host's window is not resized";
}

bool HostWindow::isOnScreen() const {
  if (desktop().tellsPlaces()) {
    const GdkRectangle place = overlayOnScreen();
    return colorAt(place.x - 1, place.y) == kYellow;
  }
  const GdkRectangle seen = placeOf(kYellow);
  return seen.width == gtk_widget_get_allocated_width(GTK_WIDGET(overlay_)) + 2 * kMargin &&
         seen.height == gtk_widget_get_allocated_height(GTK_WIDGET(overlay_)) + 2 * kMargin;
}

GdkRectangle HostWindow::overlayOnScreen() const {
  if (!desktop().tellsPlaces()) {
    const GdkRectangle seen = placeOf(kYellow);
    return {seen.x + kMargin, seen.y + kMargin, seen.width - 2 * kMargin,
            seen.height - 2 * kMargin};
  }
  GtkWidget* widget = GTK_WIDGET(overlay_);
  GdkRectangle place;
  gdk_window_get_origin(gtk_widget_get_window(GTK_WIDGET(window_)), &place.x, &place.y);
  int x = 0;
  int y = 0;
  gtk_widget_translate_coordinates(widget, GTK_WIDGET(window_), 0, 0, &x, &y);
  place.x += x;
  place.y += y;
  place.width = gtk_widget_get_allocated_width(widget);
  place.height = gtk_widget_get_allocated_height(widget);
  return place;
}

void HostWindow::destroy() {
  if (window_ != nullptr) {
    gtk_widget_destroy(GTK_WIDGET(window_));
  }
}

GtkTest::GtkTest() {
  static const bool isInstalled = [] {
    g_log_set_writer_func(failOnWarnings, nullptr, nullptr);
    gtk::install({.bundleIdentifier = "com.example.host"});
    return true;
  }();
  static_cast<void>(isInstalled);
  Platform services = platform();
  services.log = log;
  services.notificationCenter = std::make_shared<NotificationCenter>();
  installPlatform(services);
}

// What is still queued is heard by nobody: those who listened are gone.
GtkTest::~GtkTest() {
  Platform services = platform();
  services.notificationCenter = std::make_shared<NotificationCenter>();
  installPlatform(services);
  serveLoop();
}

std::shared_ptr<DomNode> clickedNode(const RecordingDelegate::Question& question) {
  const Value* element = find(question.action, kWebActionElementKey);
  const auto* dictionary = element == nullptr ? nullptr : element->as<Dictionary>();
  const Value* node = dictionary == nullptr ? nullptr : find(*dictionary, kWebElementDomNodeKey);
  return node == nullptr ? nullptr : node->object<DomNode>();
}

Page::Page()
    : interface(platform().interfaceLoader->load("MyPushAdViewController",
                                                 *platform().libraryBundle, delegate)) {}

void Page::load(const std::string& html) {
  webView()->loadHtmlString(html, platform().libraryBundle->executableUrl());
}

void Page::loadAndWait(const std::string& html) {
  const int before = delegate->mainLoads();
  load(html);
  EXPECT_TRUE(waitFor([&] { return delegate->mainLoads() > before; })) << "the page does not load";
}

void Page::showIn(const HostWindow& host, const Rect& frame) {
  host.view()->addSubview(interface->view);
  interface->view->setFrame(frame);
}

}  // namespace qorix::test
