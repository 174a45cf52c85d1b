#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>

#include <qorix/platform/View.h>

namespace qorix::tools::preview {

/// The window of a host: a small editor, with a menu bar and a text.
struct HostWindow {
  GtkWidget* window = nullptr;  // not yet shown
  std::shared_ptr<View> view;   // the text's, in which a banner can lie on top of it
};

/// A new one whose view has that size. Its menu ends the main loop.
HostWindow createHostWindow(const std::string& title, int viewWidth, int viewHeight);

}  // namespace qorix::tools::preview
