#include "platform/gtk/ClientDecorations.h"

#include <gtk/gtk.h>

#include <algorithm>

namespace qorix::gtk {

namespace {

struct Children {
  GtkWidget* content = nullptr;
  GtkWidget* titleBar = nullptr;
};

// GTK gives away its own title bar in this way only.
Children childrenOf(GtkWindow* window) {
  Children children;
  children.content = gtk_bin_get_child(GTK_BIN(window));
  gtk_container_forall(
      GTK_CONTAINER(window),
      [](GtkWidget* child, gpointer data) {
        auto* found = static_cast<Children*>(data);
        if (child != found->content) {
          found->titleBar = child;
        }
      },
      &children);
  return children;
}

// A window that fills the screen has its title bar, but does not show it.
bool isShown(GtkWidget* titleBar) {
  return gtk_widget_get_visible(titleBar) != FALSE &&
         gtk_widget_get_child_visible(titleBar) != FALSE;
}

}  // namespace

std::optional<ClientDecorations> clientDecorationsOf(GtkWindow* window) {
  const auto [content, titleBar] = childrenOf(window);
  if (content == nullptr || titleBar == nullptr) {
    return std::nullopt;
  }
  GdkRectangle inside;
  gtk_widget_get_allocation(content, &inside);
  ClientDecorations decorations{.seen = {}, .left = inside.x, .top = inside.y};
  if (isShown(titleBar)) {
    GdkRectangle bar;
    gtk_widget_get_allocation(titleBar, &bar);
    const int beyond = bar.x + bar.width - (inside.x + inside.width);
    decorations.seen.left = std::max(0, inside.x - bar.x);
    decorations.seen.right = std::max(0, beyond);
    decorations.seen.top = std::max(0, inside.y - bar.y);
  }
  return decorations;
}

}  // namespace qorix::gtk
