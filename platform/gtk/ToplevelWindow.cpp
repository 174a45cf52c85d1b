#include "platform/gtk/ToplevelWindow.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <utility>

#include "platform/Platform.h"
#include "platform/gtk/Coordinates.h"
#include "platform/gtk/WidgetView.h"

namespace qorix::gtk {

namespace {

Rect centeredIn(const Rect& area, const Size& size) {
  return {{area.origin.x + (area.size.width - size.width) / 2,
           area.origin.y + (area.size.height - size.height) / 2},
          size};
}

}  // namespace

ToplevelWindow::ToplevelWindow(std::shared_ptr<View> contentView, bool isDecorated)
    : window_(GTK_WINDOW(gtk_window_new(GTK_WINDOW_TOPLEVEL))),
      contentView_(std::move(contentView)) {
  const Size size = contentView_->frame().size;
  gtk_window_set_decorated(window_, isDecorated ? TRUE : FALSE);
  // The content's own place is what is asked for, whatever is put around it.
  gtk_window_set_gravity(window_, GDK_GRAVITY_STATIC);
  gtk_container_add(GTK_CONTAINER(window_), dynamic_cast<NativeView&>(*contentView_).widget());
  g_signal_connect(window_, "delete-event", G_CALLBACK(onDelete), this);
  g_signal_connect(window_, "configure-event", G_CALLBACK(onConfigure), this);
  g_signal_connect(window_, "destroy", G_CALLBACK(onDestroy), this);
  const auto screen = primaryScreen();
  placeContent(centeredIn(screen == nullptr ? Rect() : screen->visibleFrame(), size));
  if (isDecorated) {
    gtk_widget_realize(GTK_WIDGET(window_));
    requestDecorations(gtk_widget_get_window(GTK_WIDGET(window_)));
  }
}

ToplevelWindow::~ToplevelWindow() {
  if (window_ == nullptr) {
    return;
  }
  g_signal_handlers_disconnect_by_data(window_, this);
  GtkWidget* content = gtk_bin_get_child(GTK_BIN(window_));
  if (content != nullptr) {
    gtk_container_remove(GTK_CONTAINER(window_), content);  // others may own it
  }
  gtk_widget_destroy(GTK_WIDGET(window_));
}

Rect ToplevelWindow::frame() const { return frameRectForContentRect(contentRect_); }

void ToplevelWindow::setFrame(const Rect& frame) {
  if (window_ != nullptr) {
    placeContent(contentRectForFrameRect(frame));
  }
}

Rect ToplevelWindow::frameRectForContentRect(const Rect& contentRect) const {
  const Decorations around = decorations();
  return {{contentRect.origin.x - around.left, contentRect.origin.y - around.bottom},
          {contentRect.size.width + around.left + around.right,
           contentRect.size.height + around.top + around.bottom}};
}

Rect ToplevelWindow::contentRectForFrameRect(const Rect& frameRect) const {
  const Decorations around = decorations();
  return {{frameRect.origin.x + around.left, frameRect.origin.y + around.bottom},
          {frameRect.size.width - around.left - around.right,
           frameRect.size.height - around.top - around.bottom}};
}

std::shared_ptr<Screen> ToplevelWindow::screen() const {
  return window_ == nullptr ? nullptr : screenOfFrame(frame());
}

void ToplevelWindow::center() {
  auto area = screen();
  if (area == nullptr && window_ != nullptr) {
    area = primaryScreen();
  }
  if (area != nullptr) {
    setFrame(centeredIn(area->visibleFrame(), frame().size));
  }
}

bool ToplevelWindow::isVisible() const {
  return window_ != nullptr && gtk_widget_get_visible(GTK_WIDGET(window_)) != FALSE;
}

void ToplevelWindow::makeKeyAndOrderFront() {
  if (window_ == nullptr) {
    return;
  }
  if (!isVisible()) {
    placeContent(contentRect_);  // hiding has made the window manager forget
  }
  gtk_window_present(window_);
}

void ToplevelWindow::close() {
  if (!isVisible() || isClosing_) {
    return;
  }
  const auto held = shared_from_this();
  isClosing_ = true;
  platform().notificationCenter->post(Notification(kWindowWillCloseNotification, held));
  isClosing_ = false;
  if (window_ != nullptr) {
    gtk_widget_hide(GTK_WIDGET(window_));
  }
}

void ToplevelWindow::setLevel(WindowLevel level) {
  if (window_ != nullptr) {
    gtk_window_set_keep_above(window_, level == WindowLevel::floating ? TRUE : FALSE);
  }
}

void ToplevelWindow::setTitle(const std::string& title) {
  if (window_ != nullptr) {
    gtk_window_set_title(window_, title.c_str());
  }
}

Decorations ToplevelWindow::decorations() const {
  GdkWindow* window = window_ == nullptr ? nullptr : gtk_widget_get_window(GTK_WIDGET(window_));
  if (window == nullptr || gtk_window_get_decorated(window_) == FALSE) {
    return {};
  }
  // While it takes a window up again, a window manager may call it undecorated for a moment.
  const auto current = decorationsOfWindow(window);
  if (current && *current != Decorations()) {
    decorations_ = *current;
  }
  return decorations_;
}

void ToplevelWindow::placeContent(const Rect& contentRect) {
  askedRect_ = contentRect;
  contentRect_ = contentRect;
  const GdkRectangle place = flipped(contentRect, desktopHeight());
  gtk_window_move(window_, place.x, place.y);
  gtk_window_resize(window_, place.width, place.height);
}

int ToplevelWindow::onDelete(GtkWidget* /*widget*/, GdkEvent* /*event*/, void* self) {
  static_cast<ToplevelWindow*>(self)->close();
  return TRUE;
}

// The user and the window manager move the window, too.
int ToplevelWindow::onConfigure(GtkWidget* widget, GdkEvent* /*event*/, void* self) {
  auto* window = static_cast<ToplevelWindow*>(self);
  GdkWindow* native = gtk_widget_get_window(widget);
  GdkRectangle place;
  gdk_window_get_origin(native, &place.x, &place.y);
  place.width = gdk_window_get_width(native);
  place.height = gdk_window_get_height(native);
  const GdkRectangle asked = flipped(window->askedRect_, desktopHeight());
  window->contentRect_ = gdk_rectangle_equal(&place, &asked) != FALSE
                             ? window->askedRect_
                             : flipped(place, desktopHeight());
  return FALSE;
}

void ToplevelWindow::onDestroy(GtkWidget* /*widget*/, void* self) {
  auto* window = static_cast<ToplevelWindow*>(self);
  window->window_ = nullptr;
  window->contentRect_ = {};
  window->decorations_ = {};
}

std::shared_ptr<Window> ToplevelWindowFactory::createWindowWithContentView(
    const std::shared_ptr<View>& contentView) {
  const auto* native = dynamic_cast<const NativeView*>(contentView.get());
  if (native == nullptr || native->widget() == nullptr ||
      gtk_widget_get_parent(native->widget()) != nullptr) {
    return nullptr;
  }
  return std::make_shared<ToplevelWindow>(contentView, true);
}

std::shared_ptr<Window> ToplevelWindowFactory::createBorderlessWindow(const Rect& contentRect) {
  const auto content =
      makeNativeView<WidgetView<View>>(gtk_overlay_new(), Ownership::viewOwnsWidget);
  content->setFrame({{}, contentRect.size});
  auto window = std::make_shared<ToplevelWindow>(content, false);
  window->setFrame(contentRect);
  return window;
}

}  // namespace qorix::gtk
