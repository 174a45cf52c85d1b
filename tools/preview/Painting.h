#pragma once

#include <functional>
#include <string>

#include "platform/View.h"
#include "platform/WebView.h"

using GtkWidget = struct _GtkWidget;

namespace qorix::tools::preview {

/// The widget of one of the GTK platform's views; null once it is gone.
GtkWidget* widgetOf(const View& view);

/// Calls `done` when the page's window shows what the page looks like by now, or when it has not
/// for some seconds, as with a page that moves; never when the page goes away before.
void whenPainted(const WebView& webView, std::function<void()> done);

/// Saves what the window that holds `view` shows as a PNG. What covers the window is not in it.
/// Nothing, or why that failed.
std::string savePicture(const View& view, const std::string& file);

}  // namespace qorix::tools::preview
