#include "platform/gtk/ToplevelWindow.h"

#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include <utility>

#include <qorix/platform/Platform.h>

#include "platform/Guarded.h"
#include "platform/gtk/Accessibility.h"
#include "platform/gtk/Coordinates.h"
#include "platform/gtk/WidgetView.h"

namespace qorix::gtk {

namespace {

Rect centeredIn(const Rect& area, const Size& size) {
  return {{area.origin.x + (area.size.width - size.width) / 2,
           area.origin.y + (area.size.height - size.height) / 2},
          size};
}

bool isEscape(const GdkEventKey& key) {
  return key.keyval == GDK_KEY_Escape && (key.state & gtk_accelerator_get_default_mod_mask()) == 0;
}

}  // namespace

ToplevelWindow::ToplevelWindow(std::shared_ptr<View> contentView, bool isDecorated)
    : contentView_(std::move(contentView)), isDecorated_(isDecorated) {
  const auto screen = primaryScreen();
  askedRect_ = contentRect_ =
      centeredIn(screen == nullptr ? Rect() : screen->visibleFrame(), contentView_->frame().size);
  makeNative();
}

ToplevelWindow::~ToplevelWindow() {
  if (window_ != nullptr) {
    GtkWindow* window = window_;
    letGoOfNative();
    gtk_widget_destroy(GTK_WIDGET(window));
  }
}

void ToplevelWindow::makeNative() {
  window_ = newNoticedWindow(this);
  gtk_window_set_decorated(window_, isDecorated_ ? TRUE : FALSE);
  // The place that is asked for is the content's, whatever is put around it.
  gtk_window_set_gravity(window_, GDK_GRAVITY_STATIC);
  takeContent();
  // After all others: a page that uses the key itself keeps it.
  g_signal_connect_after(window_, "key-press-event", G_CALLBACK((guarded<onKeyPress, TRUE>)), this);
  g_signal_connect(window_, "delete-event", G_CALLBACK((guarded<onDelete, TRUE>)), this);
  g_signal_connect(window_, "configure-event", G_CALLBACK(guarded<onConfigure>), this);
  g_signal_connect(window_, "size-allocate", G_CALLBACK(guarded<onSizeAllocate>), this);
  g_signal_connect(window_, "property-notify-event", G_CALLBACK(guarded<onPropertyNotify>), this);
  setTitle(title_);
  setLevel(level_);
  placeContent(contentRect_);
  if (isDecorated_) {
    learnDecorations();
  }
}

// The host does not wait for the window manager's answer.
void ToplevelWindow::learnDecorations() {
  gtk_widget_add_events(GTK_WIDGET(window_), GDK_PROPERTY_CHANGE_MASK);
  gtk_widget_realize(GTK_WIDGET(window_));
  if (decorations() != Decorations()) {
    return;
  }
  if (!requestDecorations(gtk_widget_get_window(GTK_WIDGET(window_)))) {
    early_.reset();
  } else if (!early_) {
    early_.emplace();
  }
}

void ToplevelWindow::takeContent() {
  GtkWidget* content = dynamic_cast<NativeView&>(*contentView_).widget();
  if (content != nullptr && gtk_widget_get_parent(content) == nullptr) {
    gtk_container_add(GTK_CONTAINER(window_), content);
  }
}

void ToplevelWindow::nativeWillBeDestroyed() {
  const auto held = weak_from_this().lock();
  close();
  if (window_ != nullptr) {
    letGoOfNative();
  }
  if (window_ != nullptr) {  // a new one: somebody showed the window during its closing
    takeContent();
  }
}

void ToplevelWindow::letGoOfNative() {
  GtkWindow* window = std::exchange(window_, nullptr);
  client_.reset();
  stacked_.release();
  forgetOwnerOf(window);
  g_signal_handlers_disconnect_by_data(window, this);
  GtkWidget* content = gtk_bin_get_child(GTK_BIN(window));
  if (content != nullptr) {
    gtk_container_remove(GTK_CONTAINER(window), content);  // others may own it
  }
}

Rect ToplevelWindow::frame() const {
  const Rect frame = frameAround(contentRect_);
  if (early_) {
    early_->noteTold(frame.size);
  }
  return frame;
}

void ToplevelWindow::setFrame(const Rect& frame) {
  if (early_) {
    early_->noteSet(frame);
  }
  placeContent(contentWithin(frame));
}

Rect ToplevelWindow::frameRectForContentRect(const Rect& contentRect) const {
  if (early_) {
    early_->noteMadeFor(contentRect);
  }
  return frameAround(contentRect);
}

Rect ToplevelWindow::contentRectForFrameRect(const Rect& frameRect) const {
  return contentWithin(frameRect);
}

Rect ToplevelWindow::frameAround(const Rect& contentRect) const {
  const Decorations around = decorations();
  return {{contentRect.origin.x - around.left, contentRect.origin.y - around.bottom},
          {contentRect.size.width + around.left + around.right,
           contentRect.size.height + around.top + around.bottom}};
}

Rect ToplevelWindow::contentWithin(const Rect& frameRect) const {
  const Decorations around = decorations();
  return {{frameRect.origin.x + around.left, frameRect.origin.y + around.bottom},
          {frameRect.size.width - around.left - around.right,
           frameRect.size.height - around.top - around.bottom}};
}

std::shared_ptr<Screen> ToplevelWindow::screen() const {
  return screenOfFrame(frameAround(contentRect_));
}

void ToplevelWindow::center() {
  auto area = screen();
  if (area == nullptr) {
    area = primaryScreen();
  }
  if (area == nullptr) {
    return;
  }
  const Rect frame = centeredIn(area->visibleFrame(), frameAround(contentRect_).size);
  if (early_) {
    early_->noteCentered(frame);
  }
  placeContent(contentWithin(frame));
}

bool ToplevelWindow::isVisible() const {
  if (isVisibleWhileClosing_) {
    return *isVisibleWhileClosing_;
  }
  GdkWindow* native = isOpen() ? gtk_widget_get_window(GTK_WIDGET(window_)) : nullptr;
  return native != nullptr && (gdk_window_get_state(native) & GDK_WINDOW_STATE_ICONIFIED) == 0;
}

void ToplevelWindow::makeKeyAndOrderFront() {
  if (window_ == nullptr) {
    makeNative();
  }
  if (!isOpen()) {
    gtk_window_unmaximize(window_);
    placeContent(contentRect_);  // the window manager forgot the place when the window was hidden
  }
  if (level_ == WindowLevel::floating) {
    stacked_.keepAbove(window_);
  }
  gtk_window_deiconify(window_);
  gtk_window_present(window_);
}

void ToplevelWindow::close() {
  if (!isOpen() || isVisibleWhileClosing_) {
    return;
  }
  const auto held = shared_from_this();
  isVisibleWhileClosing_ = isVisible();
  platform().notificationCenter->post(Notification(kWindowWillCloseNotification, held));
  isVisibleWhileClosing_.reset();
  if (window_ != nullptr) {
    stacked_.release();
    gtk_widget_hide(GTK_WIDGET(window_));
  }
}

void ToplevelWindow::setLevel(WindowLevel level) {
  level_ = level;
  if (window_ != nullptr) {
    gtk_window_set_keep_above(window_, level == WindowLevel::floating ? TRUE : FALSE);
  }
}

void ToplevelWindow::setTitle(const std::string& title) {
  title_ = title;
  if (window_ != nullptr) {
    gtk_window_set_title(window_, title.c_str());
    describePopup(window_, title);
  }
}

// Whether it was shown and not closed; its user may have minimised it.
bool ToplevelWindow::isOpen() const {
  return window_ != nullptr && gtk_widget_get_visible(GTK_WIDGET(window_)) != FALSE;
}

Decorations ToplevelWindow::decorations() const {
  GdkWindow* native = window_ == nullptr ? nullptr : gtk_widget_get_window(GTK_WIDGET(window_));
  if (native == nullptr || !isDecorated_ || early_) {
    return decorations_;
  }
  if (client_) {
    decorations_ = client_->seen;
  } else if (const auto current = decorationsOfWindow(native)) {
    // While a window is shown again, a window manager may call it undecorated for a moment.
    decorations_ = *current == Decorations() ? decorations_ : *current;
  }
  return decorations_;
}

// The place of the native window, but the size of its content: GTK itself counts in this way.
GdkRectangle ToplevelWindow::nativePlace(const Rect& contentRect) const {
  GdkRectangle place = placeable(flipped(contentRect, desktopHeight()));
  if (client_) {
    place.x -= client_->left;
    place.y -= client_->top;
  }
  return place;
}

void ToplevelWindow::placeContent(const Rect& contentRect) {
  askedRect_ = contentRect;
  contentRect_ = contentRect;
  if (window_ != nullptr) {
    const GdkRectangle place = nativePlace(contentRect);
    gtk_window_move(window_, place.x, place.y);
    gtk_window_resize(window_, place.width, place.height);
  }
}

// Not if it is maximised: it lies where the desktop has put it.
bool ToplevelWindow::isWhereAsked() const {
  return contentRect_ == askedRect_ && gtk_window_is_maximized(window_) == FALSE;
}

// The user and the window manager move the window as well.
void ToplevelWindow::noteWhereItIs() {
  const GdkRectangle asked = nativePlace(askedRect_);
  GdkRectangle place = asked;
  GdkWindow* native = gtk_widget_get_window(GTK_WIDGET(window_));
  const bool isPlaceKnown = GDK_IS_X11_WINDOW(native);
  if (isPlaceKnown) {
    gdk_window_get_origin(native, &place.x, &place.y);
  }
  gtk_window_get_size(window_, &place.width, &place.height);
  if (gdk_rectangle_equal(&place, &asked) != FALSE) {
    contentRect_ = askedRect_;
    return;
  }
  if (client_) {
    place.x += client_->left;
    place.y += client_->top;
  }
  contentRect_ = flipped(place, desktopHeight());
  const auto screen = isPlaceKnown ? nullptr : primaryScreen();
  if (screen != nullptr) {
    contentRect_ = movedInto(contentRect_, screen->visibleFrame());
  }
}

int ToplevelWindow::onDelete(GtkWidget* /*widget*/, GdkEvent* /*event*/, void* self) {
  static_cast<ToplevelWindow*>(self)->close();
  return TRUE;
}

int ToplevelWindow::onKeyPress(GtkWidget* /*widget*/, GdkEvent* event, void* self) {
  if (!isEscape(event->key)) {
    return GDK_EVENT_PROPAGATE;
  }
  static_cast<ToplevelWindow*>(self)->close();
  return GDK_EVENT_STOP;
}

int ToplevelWindow::onConfigure(GtkWidget* /*widget*/, GdkEvent* /*event*/, void* self) {
  static_cast<ToplevelWindow*>(self)->noteWhereItIs();
  return FALSE;
}

// What GTK draws around the content changes with the state of the window, after its size.
void ToplevelWindow::onSizeAllocate(GtkWidget* widget, GdkRectangle* /*allocation*/, void* self) {
  auto* window = static_cast<ToplevelWindow*>(self);
  const auto client = clientDecorationsOf(window->window_);
  if (client == window->client_) {
    return;
  }
  const bool isWhereAsked = window->isWhereAsked();
  window->client_ = client;
  if (isWhereAsked) {
    window->placeContent(window->askedRect_);
  } else if (gtk_widget_get_mapped(widget) != FALSE) {
    window->noteWhereItIs();
  }
}

int ToplevelWindow::onPropertyNotify(GtkWidget* /*widget*/, GdkEventProperty* event, void* self) {
  auto* window = static_cast<ToplevelWindow*>(self);
  if (window->early_ && isAboutDecorations(*event)) {
    const EarlyFrames early = *std::exchange(window->early_, std::nullopt);
    if (const auto content = early.contentWithin(window->decorations())) {
      window->placeContent(*content);
    }
  }
  return FALSE;
}

std::shared_ptr<Window> ToplevelWindowFactory::createWindowWithContentView(
    const std::shared_ptr<View>& contentView) {
  if (!hasDisplay("window")) {
    return nullptr;
  }
  const auto* native = dynamic_cast<const NativeView*>(contentView.get());
  if (native == nullptr || native->widget() == nullptr ||
      gtk_widget_get_parent(native->widget()) != nullptr) {
    return nullptr;
  }
  return std::make_shared<ToplevelWindow>(contentView, true);
}

std::shared_ptr<Window> ToplevelWindowFactory::createBorderlessWindow(const Rect& contentRect) {
  if (!hasDisplay("window")) {
    return nullptr;
  }
  const auto content =
      makeNativeView<WidgetView<View>>(gtk_overlay_new(), Ownership::viewOwnsWidget);
  content->setFrame({{}, contentRect.size});
  auto window = std::make_shared<ToplevelWindow>(content, false);
  window->setFrame(contentRect);
  return window;
}

}  // namespace qorix::gtk
