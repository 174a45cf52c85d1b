#pragma once

using GtkWidget = struct _GtkWidget;
using GdkEvent = union _GdkEvent;

namespace qorix::gtk {

/// What the user does in one widget, by pointer, keys or touch: so that it can be told which of a
/// page's wishes have an act of the user behind them. Main thread only.
class UserActs {
 public:
  /// Seconds after which an act stands behind nothing any more.
  static constexpr double kLasts = 5;

  /// Listens until the widget is destroyed, or `stop` is called, which must be before this ends.
  explicit UserActs(GtkWidget* widget);
  UserActs(const UserActs&) = delete;
  UserActs& operator=(const UserActs&) = delete;
  void stop(GtkWidget* widget);

  /// Is there an act that nothing has been done for yet? One thing is done for each.
  bool take();

 private:
  static int onEvent(GtkWidget* widget, GdkEvent* event, void* self);

  int open_ = 0;
  double last_ = 0;
};

}  // namespace qorix::gtk
