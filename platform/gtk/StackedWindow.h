#pragma once

using GtkWidget = struct _GtkWidget;
using GtkWindow = struct _GtkWindow;

namespace qorix::gtk {

/// Keeps a window above the host's windows. X11 has a level for that; elsewhere a window can stay
/// above one other window, its parent. The parent is chosen when the window is shown, and another
/// one when it goes.
class StackedWindow {
 public:
  StackedWindow() = default;
  ~StackedWindow() { release(); }
  StackedWindow(const StackedWindow&) = delete;
  StackedWindow& operator=(const StackedWindow&) = delete;

  void keepAbove(GtkWindow* window);

  /// From now on the window is as any other. To be called before it is gone.
  void release();

 private:
  void chooseParent();
  void setParent(GtkWindow* parent);

  static void onParentUnmap(GtkWidget* parent, void* self);
  static void onParentMap(GtkWidget* parent, void* self);
  static void onParentDestroy(GtkWidget* parent, void* self);

  GtkWindow* window_ = nullptr;
  GtkWindow* parent_ = nullptr;
};

}  // namespace qorix::gtk
