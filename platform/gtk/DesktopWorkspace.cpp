#include "platform/gtk/DesktopWorkspace.h"

#include <gtk/gtk.h>

namespace qorix::gtk {

void DesktopWorkspace::openUrl(const Url& url) {
  GdkDisplay* display = gdk_display_get_default();
  GdkAppLaunchContext* context =
      display == nullptr ? nullptr : gdk_display_get_app_launch_context(display);
  // No callback: an address that no program opens is dropped.
  g_app_info_launch_default_for_uri_async(url.absoluteString().c_str(),
                                          reinterpret_cast<GAppLaunchContext*>(context), nullptr,
                                          nullptr, nullptr);
  g_clear_object(&context);
}

}  // namespace qorix::gtk
