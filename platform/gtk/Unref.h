#pragma once

#include <glib-object.h>

namespace qorix::gtk {

/// Gives a reference to a GObject back: the deleter of a std::unique_ptr that holds one.
struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};

}  // namespace qorix::gtk
