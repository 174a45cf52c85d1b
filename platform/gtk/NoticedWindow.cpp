#include "platform/gtk/NoticedWindow.h"

#include <gtk/gtk.h>

#include "platform/Guarded.h"

namespace qorix::gtk {

namespace {

GQuark ownerQuark() {
  static const GQuark quark = g_quark_from_static_string("qorix-window");
  return quark;
}

GObjectClass* parentClass = nullptr;

void disposeWindow(GObject* window) {
  if (auto* owner = static_cast<NoticedWindowOwner*>(g_object_get_qdata(window, ownerQuark()))) {
    callGuarded([owner] { owner->nativeWillBeDestroyed(); });
  }
  parentClass->dispose(window);
}

void initWindowClass(gpointer windowClass, gpointer /*data*/) {
  parentClass = G_OBJECT_CLASS(g_type_class_peek_parent(windowClass));
  G_OBJECT_CLASS(windowClass)->dispose = disposeWindow;
}

}  // namespace

GtkWindow* newNoticedWindow(NoticedWindowOwner* owner) {
  static const GType type =
      g_type_register_static_simple(GTK_TYPE_WINDOW, "QorixWindow", sizeof(GtkWindowClass),
                                    initWindowClass, sizeof(GtkWindow), nullptr, GTypeFlags{});
  auto* window = static_cast<GtkWindow*>(g_object_new(type, "type", GTK_WINDOW_TOPLEVEL, nullptr));
  g_object_set_qdata(G_OBJECT(window), ownerQuark(), owner);
  return window;
}

void forgetOwnerOf(GtkWindow* window) {
  g_object_set_qdata(G_OBJECT(window), ownerQuark(), nullptr);
}

}  // namespace qorix::gtk
