#include "platform/gtk/HostFocus.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include "platform/gtk/WidgetView.h"

namespace qorix::gtk {

namespace {

GQuark hostFocusQuark() {
  static const GQuark quark = g_quark_from_static_string("qorix-host-focus");
  return quark;
}

GWeakRef* hostFocusOf(GtkWindow* window) {
  return static_cast<GWeakRef*>(g_object_get_qdata(G_OBJECT(window), hostFocusQuark()));
}

bool isInAdvertisement(GtkWidget* widget) {
  return NativeView::of(gtk_widget_get_ancestor(widget, WEBKIT_TYPE_WEB_VIEW)) != nullptr;
}

void onSetFocus(GtkWindow* window, GtkWidget* widget, gpointer /*data*/) {
  if (widget != nullptr && !isInAdvertisement(widget)) {
    g_weak_ref_set(hostFocusOf(window), widget);
  }
}

void freeWeakRef(gpointer data) {
  auto* reference = static_cast<GWeakRef*>(data);
  g_weak_ref_clear(reference);
  delete reference;
}

bool canTakeFocus(GtkWidget* widget, GtkWindow* window) {
  return gtk_widget_get_toplevel(widget) == GTK_WIDGET(window) &&
         gtk_widget_get_mapped(widget) != FALSE && gtk_widget_is_sensitive(widget) != FALSE;
}

// What is selected and typed in the widget stays.
void giveFocus(GtkWidget* widget) {
  if (GTK_IS_ENTRY(widget)) {
    gtk_entry_grab_focus_without_selecting(GTK_ENTRY(widget));
  } else {
    gtk_widget_grab_focus(widget);
  }
}

}  // namespace

void rememberHostFocus(GtkWindow* window) {
  if (hostFocusOf(window) != nullptr) {
    return;
  }
  auto* reference = new GWeakRef;
  g_weak_ref_init(reference, nullptr);
  g_object_set_qdata_full(G_OBJECT(window), hostFocusQuark(), reference, freeWeakRef);
  g_signal_connect(window, "set-focus", G_CALLBACK(onSetFocus), nullptr);
  onSetFocus(window, gtk_window_get_focus(window), nullptr);
}

FocusReturn::FocusReturn(GtkWidget* leaving) {
  GtkWidget* toplevel = gtk_widget_get_toplevel(leaving);
  GtkWidget* focus = GTK_IS_WINDOW(toplevel) ? gtk_window_get_focus(GTK_WINDOW(toplevel)) : nullptr;
  if (focus != nullptr && (focus == leaving || gtk_widget_is_ancestor(focus, leaving) != FALSE)) {
    window_ = GTK_WINDOW(g_object_ref(toplevel));
  }
}

FocusReturn::~FocusReturn() {
  if (window_ == nullptr) {
    return;
  }
  GWeakRef* reference = hostFocusOf(window_);
  auto* widget = reference == nullptr || gtk_window_get_focus(window_) != nullptr
                     ? nullptr
                     : static_cast<GtkWidget*>(g_weak_ref_get(reference));
  if (widget != nullptr) {
    if (canTakeFocus(widget, window_)) {
      giveFocus(widget);
    }
    g_object_unref(widget);
  }
  g_object_unref(window_);
}

}  // namespace qorix::gtk
