#pragma once

#include <glib.h>

#include <qorix/platform/Value.h>

namespace qorix::gtk {

/// `dictionary` as a new floating `a{sv}`. URLs become texts, what has no value for C becomes null.
GVariant* newVariant(const Dictionary& dictionary);

}  // namespace qorix::gtk
