#pragma once

#include <cstdint>

using GtkWidget = struct _GtkWidget;
using GdkEvent = union _GdkEvent;
using GdkEventKey = struct _GdkEventKey;

namespace qorix::gtk {

/// Leads the keyboard into the page of one web view and out again. Main thread only.
///
/// The Tab key goes from the host's widgets to the page, through its links, and on to the host's
/// next widget. A banner in a window that is only just appearing is passed over when GTK looks for
/// the widget that gets the keyboard first: that one is the host's.
class PageFocus {
 public:
  /// Works on `webView` until `stop`, which must be called before that or this is destroyed.
  explicit PageFocus(GtkWidget* webView);
  PageFocus(const PageFocus&) = delete;
  PageFocus& operator=(const PageFocus&) = delete;
  void stop();

  /// Whether there is a page; none at first. Without one, all keys are the window's.
  void setHasPage(bool hasPage) { hasPage_ = hasPage; }

 private:
  void followWindow();
  void leaveWindow();
  bool isInPopup() const;
  bool isFocused() const;
  bool isForwarding() const;

  static int onKeyPress(GtkWidget* webView, GdkEventKey* event, void* self);
  static int onFocus(GtkWidget* webView, int direction, void* self);
  static void onHierarchyChanged(GtkWidget* webView, GtkWidget* previous, void* self);
  static int onWindowEvent(GtkWidget* window, GdkEvent* event, void* self);

  GtkWidget* const webView_;
  GtkWidget* window_ = nullptr;  // null once it is destroyed
  bool hasPage_ = false;
  std::uint32_t lastTab_ = 0;  // the times of Tab keys; 0: none
  std::uint32_t leftBy_ = 0;
};

}  // namespace qorix::gtk
