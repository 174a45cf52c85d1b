#pragma once

using GtkWidget = struct _GtkWidget;
using GtkWindow = struct _GtkWindow;

namespace qorix::gtk {

/// Notes the widget that the host has most recently offered for advertisements.
void noteHostWidget(GtkWidget* widget);

/// The host's window that `window` is to stay above: the active one, else the one with the widget
/// noted last, else any. Null if the host shows none.
GtkWindow* hostWindowBelow(GtkWindow* window);

}  // namespace qorix::gtk
