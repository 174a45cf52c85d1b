#include "platform/gtk/PageFocus.h"

#include <gtk/gtk.h>

#include "platform/gtk/HostFocus.h"

namespace qorix::gtk {

namespace {

bool isTab(const GdkEventKey& key) {
  return key.keyval == GDK_KEY_Tab || key.keyval == GDK_KEY_ISO_Left_Tab ||
         key.keyval == GDK_KEY_KP_Tab;
}

}  // namespace

PageFocus::PageFocus(GtkWidget* webView) : webView_(webView) {
  g_signal_connect(webView, "key-press-event", G_CALLBACK(onKeyPress), this);
  g_signal_connect(webView, "focus", G_CALLBACK(onFocus), this);
  g_signal_connect(webView, "hierarchy-changed", G_CALLBACK(onHierarchyChanged), this);
  followWindow();
}

void PageFocus::stop() {
  g_signal_handlers_disconnect_by_data(webView_, this);
  leaveWindow();
}

void PageFocus::followWindow() {
  GtkWidget* toplevel = gtk_widget_get_toplevel(webView_);
  if (!GTK_IS_WINDOW(toplevel)) {
    return;
  }
  window_ = toplevel;
  g_object_add_weak_pointer(G_OBJECT(window_), reinterpret_cast<gpointer*>(&window_));
  g_signal_connect(window_, "event", G_CALLBACK(onWindowEvent), this);
  rememberHostFocus(GTK_WINDOW(window_));
}

void PageFocus::leaveWindow() {
  if (window_ != nullptr) {
    g_signal_handlers_disconnect_by_data(window_, this);
    g_object_remove_weak_pointer(G_OBJECT(window_), reinterpret_cast<gpointer*>(&window_));
    window_ = nullptr;
  }
}

bool PageFocus::isInPopup() const {
  GtkWidget* holder = gtk_widget_get_parent(webView_);
  return holder != nullptr && GTK_IS_WINDOW(gtk_widget_get_parent(holder));
}

bool PageFocus::isFocused() const {
  return window_ != nullptr && gtk_window_get_focus(GTK_WINDOW(window_)) == webView_;
}

// Whether GTK is handling the last Tab key once more, which the page did not want.
bool PageFocus::isForwarding() const {
  GdkEvent* event = gtk_get_current_event();
  const bool isLastTab =
      event != nullptr && event->type == GDK_KEY_PRESS && event->key.time == lastTab_;
  if (event != nullptr) {
    gdk_event_free(event);
  }
  return isLastTab;
}

// The engine swallows the keys for a page that is gone.
int PageFocus::onKeyPress(GtkWidget* webView, GdkEventKey* event, void* data) {
  auto* page = static_cast<PageFocus*>(data);
  if (!page->hasPage_) {
    g_signal_stop_emission_by_name(webView, "key-press-event");
  } else if (isTab(*event)) {
    page->lastTab_ = event->time;
  }
  return GDK_EVENT_PROPAGATE;
}

// Asks the web view to take the focus or, if it has it, to let it go on to the next widget.
int PageFocus::onFocus(GtkWidget* webView, int /*direction*/, void* data) {
  auto* page = static_cast<PageFocus*>(data);
  if (page->isFocused()) {
    if (!page->isForwarding()) {  // the engine asks, after the last link
      page->leftBy_ = page->lastTab_;
    }
  } else if (!page->isInPopup() && page->window_ != nullptr &&
             gtk_window_is_active(GTK_WINDOW(page->window_)) == FALSE) {
    g_signal_stop_emission_by_name(webView, "focus");
  }
  return FALSE;
}

void PageFocus::onHierarchyChanged(GtkWidget* /*webView*/, GtkWidget* /*previous*/, void* data) {
  auto* page = static_cast<PageFocus*>(data);
  page->leaveWindow();
  page->followWindow();
}

// A Tab key that has led out of the page has been used. The engine nevertheless passes it on, and
// the host's focus would move once more. The engine also waits for the key to come back to the web
// view, and would take the page's next key for it.
int PageFocus::onWindowEvent(GtkWidget* /*window*/, GdkEvent* event, void* data) {
  auto* page = static_cast<PageFocus*>(data);
  if (event->type != GDK_KEY_PRESS || page->leftBy_ == 0 || event->key.time != page->leftBy_) {
    return GDK_EVENT_PROPAGATE;
  }
  page->leftBy_ = 0;
  if (page->isFocused()) {  // there was no other widget to go to
    return GDK_EVENT_PROPAGATE;
  }
  if (gtk_widget_get_realized(page->webView_) != FALSE) {
    gtk_widget_event(page->webView_, event);
  }
  return GDK_EVENT_STOP;
}

}  // namespace qorix::gtk
