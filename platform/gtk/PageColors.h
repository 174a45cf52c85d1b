#pragma once

#include <webkit2/webkit2.h>

namespace qorix::gtk {

/// Gives the controls of pages one colour under every theme of the desktop. A page's own style
/// comes first.
void keepColorsOfPages(WebKitUserContentManager* manager);

}  // namespace qorix::gtk
