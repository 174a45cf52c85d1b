#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>
#include <vector>

#include <qorix/platform/View.h>

/// The window of a small editor, with a menu bar and texts one below the other.
struct EditorWindow {
  GtkWidget* window = nullptr;  // not yet shown
  /// The texts' views, from top to bottom, in which a banner can lie on top of the text.
  std::vector<std::shared_ptr<qorix::View>> views;
};

/// A new one with so many views of that size. Its menu ends the main loop.
EditorWindow createEditorWindow(const std::string& title, int views, int viewWidth, int viewHeight);
