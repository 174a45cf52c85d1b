#pragma once

using GtkWidget = struct _GtkWidget;
using GtkWindow = struct _GtkWindow;

namespace qorix::gtk {

/// From now on the window knows which of its host's widgets had the keyboard last, whatever
/// advertisement has it.
void rememberHostFocus(GtkWindow* window);

/// Lives while an advertisement leaves its window or is hidden there: if the keyboard was in it and
/// is then nowhere, the host's widget that had it last gets it back.
class FocusReturn {
 public:
  /// `leaving` holds the advertisement.
  explicit FocusReturn(GtkWidget* leaving);
  ~FocusReturn();
  FocusReturn(const FocusReturn&) = delete;
  FocusReturn& operator=(const FocusReturn&) = delete;

 private:
  GtkWindow* window_ = nullptr;  // null if the keyboard was not in it
};

}  // namespace qorix::gtk
