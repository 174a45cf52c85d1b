#pragma once

#include <string>

using GtkWidget = struct _GtkWidget;
using GtkWindow = struct _GtkWindow;

namespace qorix::gtk {

/// What assistive technology, such as a screen reader, is told about advertisements. The engine
/// adds what is in their pages. An advertisement without a title is called "Advertisement".

/// `holder` is a part of its window that holds one advertisement.
void describeHolder(GtkWidget* holder, const std::string& title);

/// `window` shows one advertisement, and nothing else.
void describePopup(GtkWindow* window, const std::string& title);

}  // namespace qorix::gtk
