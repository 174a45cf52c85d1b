#include "platform/gtk/DesktopWorkspace.h"

#include <gtk/gtk.h>

namespace qorix::gtk {

void DesktopWorkspace::openUrl(const Url& url) {
  GdkAppLaunchContext* context = gdk_display_get_app_launch_context(gdk_display_get_default());
  // No callback: an address that no program opens is dropped.
  g_app_info_launch_default_for_uri_async(url.absoluteString().c_str(),
                                          G_APP_LAUNCH_CONTEXT(context), nullptr, nullptr, nullptr);
  g_object_unref(context);
}

}  // namespace qorix::gtk
