#pragma once

#include <memory>
#include <optional>
#include <string>

#include <qorix/platform/Window.h>

#include "platform/gtk/Desktop.h"

using GtkWidget = struct _GtkWidget;
using GtkWindow = struct _GtkWindow;
using GdkEvent = union _GdkEvent;

namespace qorix::gtk {

/// A window of its own on the desktop. Its GtkWindow is made for the first showing at the latest,
/// and made anew when somebody has destroyed it; what it showed is kept for the next one. On
/// Wayland, where nobody says where a window is, it counts as being where it was asked to be, as
/// far as it is on its screen there.
class ToplevelWindow : public Window, public std::enable_shared_from_this<ToplevelWindow> {
 public:
  /// A hidden window around `contentView` (a view on a widget), as large as that view's frame, in
  /// the middle of the primary screen.
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

  /// Somebody is destroying the GtkWindow: the window is closed, and lets go of it.
  void nativeWillBeDestroyed();

 private:
  void makeNative();
  void takeContent();
  void letGoOfNative();
  bool isOpen() const;
  Decorations decorations() const;
  void placeContent(const Rect& contentRect);

  static int onDelete(GtkWidget* widget, GdkEvent* event, void* self);
  static int onConfigure(GtkWidget* widget, GdkEvent* event, void* self);

  GtkWindow* window_ = nullptr;  // null while there is none
  std::shared_ptr<View> contentView_;
  const bool isDecorated_;
  WindowLevel level_ = WindowLevel::normal;
  std::string title_;
  Rect askedRect_;                   // of the content, with its fractions
  Rect contentRect_;                 // the same, until the window turns out to be somewhere else
  mutable Decorations decorations_;  // as last heard: a hidden window may have lost them
  std::optional<bool> isVisibleWhileClosing_;
};

class ToplevelWindowFactory : public WindowFactory {
 public:
  std::shared_ptr<Window> createWindowWithContentView(
      const std::shared_ptr<View>& contentView) override;
  std::shared_ptr<Window> createBorderlessWindow(const Rect& contentRect) override;
};

}  // namespace qorix::gtk
