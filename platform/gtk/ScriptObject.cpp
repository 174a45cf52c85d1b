#include "platform/gtk/ScriptObject.h"

#include <jsc/jsc.h>

#include <memory>

#include "platform/gtk/Unref.h"

namespace qorix::gtk {

namespace {

using Property = std::unique_ptr<JSCValue, Unref>;

Property property(JSCValue* object, const char* name) {
  return Property(jsc_value_object_get_property(object, name));
}

}  // namespace

std::string textProperty(JSCValue* object, const char* name) {
  GBytes* bytes = jsc_value_to_string_as_bytes(property(object, name).get());
  if (bytes == nullptr) {
    return {};
  }
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
  std::string text(data == nullptr ? "" : data, size);
  g_bytes_unref(bytes);
  return text;
}

double numberProperty(JSCValue* object, const char* name) {
  return jsc_value_to_double(property(object, name).get());
}

bool flagProperty(JSCValue* object, const char* name) {
  return jsc_value_to_boolean(property(object, name).get()) != FALSE;
}

}  // namespace qorix::gtk
