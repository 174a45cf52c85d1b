#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>
#include <vector>

#include <qorix/platform/View.h>

/// The window of a small editor: a menu bar, and texts below each other.
struct EditorWindow {
  GtkWidget* window = nullptr;  // not yet shown
  /// One view per text, from top to bottom. A banner lies on top of the text.
  std::vector<std::shared_ptr<qorix::View>> views;
};

/// Creates a window with `views` views of the given size. Its menu ends the main loop.
EditorWindow createEditorWindow(const std::string& title, int views, int viewWidth, int viewHeight);
