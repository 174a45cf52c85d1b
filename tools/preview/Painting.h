#pragma once

#include <functional>
#include <string>

#include <qorix/platform/View.h>
#include <qorix/platform/WebView.h>

using GtkWidget = struct _GtkWidget;

namespace qorix::tools::preview {

/// The widget of one of the GTK platform's views; null once it is gone.
GtkWidget* widgetOf(const View& view);

/// Calls `done` when the window shows the page as it is now, or after some seconds if the page
/// keeps changing. Never calls it if the page goes away first.
void whenPainted(const WebView& webView, std::function<void()> done);

/// Saves a picture of the window that holds `view` as a PNG, without what covers the window.
/// Returns why that failed; empty if it did not.
std::string savePicture(const View& view, const std::string& file);

}  // namespace qorix::tools::preview
