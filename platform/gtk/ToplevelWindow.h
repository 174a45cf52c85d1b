#pragma once

#include <memory>
#include <optional>
#include <string>

#include <qorix/platform/Window.h>

#include "platform/gtk/Desktop.h"
#include "platform/gtk/NoticedWindow.h"

using GtkWidget = struct _GtkWidget;
using GdkEvent = union _GdkEvent;

namespace qorix::gtk {

/// A window on the desktop, around a GtkWindow. If somebody destroys that, the next showing makes
/// another one with the same content. On Wayland, where a program cannot learn where its windows
/// are, it counts as being where it was asked to be, as far as that is on the screen.
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
  Decorations decorations() const;
  void placeContent(const Rect& contentRect);

  static int onDelete(GtkWidget* widget, GdkEvent* event, void* self);
  static int onKeyPress(GtkWidget* widget, GdkEvent* event, void* self);
  static int onConfigure(GtkWidget* widget, GdkEvent* event, void* self);

  GtkWindow* window_ = nullptr;  // null after somebody has destroyed it
  std::shared_ptr<View> contentView_;
  const bool isDecorated_;
  WindowLevel level_ = WindowLevel::normal;
  std::string title_;
  Rect askedRect_;    // of the content, as asked for
  Rect contentRect_;  // where it is; as asked for unless it turns out to be elsewhere
  mutable Decorations decorations_;  // the last known: a hidden window may have lost them
  std::optional<bool> isVisibleWhileClosing_;
};

class ToplevelWindowFactory : public WindowFactory {
 public:
  std::shared_ptr<Window> createWindowWithContentView(
      const std::shared_ptr<View>& contentView) override;
  std::shared_ptr<Window> createBorderlessWindow(const Rect& contentRect) override;
};

}  // namespace qorix::gtk
