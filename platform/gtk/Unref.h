#pragma once

#include <glib-object.h>

namespace qorix::gtk {

/// Releases a reference to a GObject: the deleter of a std::unique_ptr that holds one.
struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};

}  // namespace qorix::gtk
