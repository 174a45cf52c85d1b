#include "platform/gtk/PageColors.h"

namespace qorix::gtk {

namespace {

// The engine would take it from the theme. This is the one that it takes from GTK's usual theme.
constexpr const char* kColors = ":root { accent-color: #3584e4 }";

}  // namespace

void keepColorsOfPages(WebKitUserContentManager* manager) {
  WebKitUserStyleSheet* colors =
      webkit_user_style_sheet_new(kColors, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                                  WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr);
  webkit_user_content_manager_add_style_sheet(manager, colors);
  webkit_user_style_sheet_unref(colors);
}

}  // namespace qorix::gtk
