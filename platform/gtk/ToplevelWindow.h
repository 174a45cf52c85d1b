#pragma once

#include <memory>
#include <optional>
#include <string>

#include <qorix/platform/Window.h>

#include "platform/gtk/ClientDecorations.h"
#include "platform/gtk/Desktop.h"
#include "platform/gtk/EarlyFrames.h"
#include "platform/gtk/NoticedWindow.h"
#include "platform/gtk/StackedWindow.h"

using GtkWidget = struct _GtkWidget;
using cairo_rectangle_int_t = struct _cairo_rectangle_int;
using GdkEvent = union _GdkEvent;
using GdkEventProperty = struct _GdkEventProperty;

namespace qorix::gtk {

/// A window on the desktop, around a GtkWindow. If somebody destroys that, the next showing makes
/// another one with the same content.
///
/// On X11 the window lies where it is asked to be. On Wayland it lies where the compositor puts it:
/// a program can neither place its windows nor learn where they are. The window then counts as
/// being where it was asked to be, as far as that is on the screen.
class ToplevelWindow : public Window,
                       public std::enable_shared_from_this<ToplevelWindow>,
                       private NoticedWindowOwner {
 public:
  /// A hidden window around `contentView` (a view on a widget), of the size of that view's frame,
  /// in the middle of the primary screen.
  ToplevelWindow(std::shared_ptr<View> contentView, bool isDecorated);
  ~ToplevelWindow() override;

  std::shared_ptr<View> contentView() const override { return contentView_; }
  Rect frame() const override;
  void setFrame(const Rect& frame) override;
  Rect frameRectForContentRect(const Rect& contentRect) const override;
  Rect contentRectForFrameRect(const Rect& frameRect) const override;
  std::shared_ptr<Screen> screen() const override;
  void center() override;
  bool isVisible() const override;
  void makeKeyAndOrderFront() override;
  void close() override;
  void setLevel(WindowLevel level) override;
  void setTitle(const std::string& title) override;

 private:
  /// Closes the window and releases its content.
  void nativeWillBeDestroyed() override;

  void makeNative();
  void takeContent();
  void letGoOfNative();
  bool isOpen() const;
  bool isWhereAsked() const;
  Decorations decorations() const;
  void learnDecorations();
  Rect frameAround(const Rect& contentRect) const;
  Rect contentWithin(const Rect& frameRect) const;
  cairo_rectangle_int_t nativePlace(const Rect& contentRect) const;
  void placeContent(const Rect& contentRect);
  void noteWhereItIs();

  static int onDelete(GtkWidget* widget, GdkEvent* event, void* self);
  static int onKeyPress(GtkWidget* widget, GdkEvent* event, void* self);
  static int onConfigure(GtkWidget* widget, GdkEvent* event, void* self);
  static void onSizeAllocate(GtkWidget* widget, cairo_rectangle_int_t* allocation, void* self);
  static int onPropertyNotify(GtkWidget* widget, GdkEventProperty* event, void* self);

  GtkWindow* window_ = nullptr;  // null after somebody has destroyed it
  std::shared_ptr<View> contentView_;
  const bool isDecorated_;
  StackedWindow stacked_;
  WindowLevel level_ = WindowLevel::normal;
  std::string title_;
  std::optional<ClientDecorations> client_;  // at the last allocation
  Rect askedRect_;                           // of the content, as asked for
  Rect contentRect_;  // where it is; as asked for unless it turns out to be elsewhere
  mutable Decorations decorations_;           // the last known: a hidden window may have lost them
  mutable std::optional<EarlyFrames> early_;  // until the window manager has named them
  std::optional<bool> isVisibleWhileClosing_;
};

class ToplevelWindowFactory : public WindowFactory {
 public:
  std::shared_ptr<Window> createWindowWithContentView(
      const std::shared_ptr<View>& contentView) override;
  std::shared_ptr<Window> createBorderlessWindow(const Rect& contentRect) override;
};

}  // namespace qorix::gtk
