#pragma once

using GtkWidget = struct _GtkWidget;
using GdkEvent = union _GdkEvent;

namespace qorix::gtk {

/// Notes what the user does in one widget, by pointer, keys or touch, so that it is known which
/// navigations of its page the user caused. Main thread only.
class UserActs {
 public:
  /// Seconds after which an act counts for nothing any more.
  static constexpr double kLasts = 5;

  /// Listens to `widget` until `stop`, which must be called before this object is destroyed.
  explicit UserActs(GtkWidget* widget);
  UserActs(const UserActs&) = delete;
  UserActs& operator=(const UserActs&) = delete;
  void stop(GtkWidget* widget);

  /// Whether there is an act that has not been used yet. Uses one.
  bool take();

 private:
  static int onEvent(GtkWidget* widget, GdkEvent* event, void* self);

  int open_ = 0;
  double last_ = 0;
};

}  // namespace qorix::gtk
