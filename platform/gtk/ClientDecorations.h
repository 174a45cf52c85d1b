#pragma once

#include <optional>

#include "platform/gtk/Desktop.h"

using GtkWindow = struct _GtkWindow;

namespace qorix::gtk {

/// What GTK itself puts around a window's content where the desktop leaves that to programs: a
/// title bar that the user sees, and an invisible border for the shadow. The native window, and its
/// place, are those of all of this.
struct ClientDecorations {
  Decorations seen;
  /// From the native window's upper left corner to the content's.
  int left = 0;
  int top = 0;
  bool operator==(const ClientDecorations&) const = default;
};

/// Absent if GTK draws none around `window`. It is not known before `window` is realized.
std::optional<ClientDecorations> clientDecorationsOf(GtkWindow* window);

}  // namespace qorix::gtk
