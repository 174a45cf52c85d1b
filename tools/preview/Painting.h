#pragma once

#include <functional>
#include <string>

#include <qorix/platform/View.h>
#include <qorix/platform/WebView.h>

using GtkWidget = struct _GtkWidget;

/// The widget of one of the GTK platform's views; null once it is gone.
GtkWidget* widgetOf(const qorix::View& view);

/// Calls `done` when the page's window shows what the page looks like by now, or when it has not
/// for some seconds, as with a page that moves; never when the page goes away before.
void whenPainted(const qorix::WebView& webView, std::function<void()> done);

/// Saves what the window that holds `view` shows as a PNG. What covers the window is not in it.
/// Nothing, or why that failed.
std::string savePicture(const qorix::View& view, const std::string& file);
