#include "platform/gtk/glib/Variants.h"

#include <cstdint>
#include <string>

#include "platform/gtk/glib/Results.h"

namespace qorix::gtk {

namespace {

GVariant* variantOf(const Value& value);

GVariant* textVariant(const std::string& text) { return g_variant_new_take_string(newText(text)); }

GVariant* arrayVariant(const Array& array) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("av"));
  for (const Value& element : array) {
    g_variant_builder_add(&builder, "v", variantOf(element));
  }
  return g_variant_builder_end(&builder);
}

GVariant* variantOf(const Value& value) {
  if (const auto* flag = value.as<bool>()) {
    return g_variant_new_boolean(*flag ? TRUE : FALSE);
  }
  if (const auto* integer = value.as<std::int64_t>()) {
    return g_variant_new_int64(*integer);
  }
  if (const auto* fraction = value.as<double>()) {
    return g_variant_new_double(*fraction);
  }
  if (const auto* text = value.as<std::string>()) {
    return textVariant(*text);
  }
  if (const auto* url = value.as<Url>()) {
    return textVariant(url->absoluteString());
  }
  if (const auto* array = value.as<Array>()) {
    return arrayVariant(*array);
  }
  if (const auto* dictionary = value.as<Dictionary>()) {
    return newVariant(*dictionary);
  }
  return g_variant_new_maybe(G_VARIANT_TYPE_VARIANT, nullptr);
}

}  // namespace

GVariant* newVariant(const Dictionary& dictionary) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
  for (const auto& [name, member] : dictionary) {
    gchar* key = newText(name);
    g_variant_builder_add(&builder, "{sv}", key, variantOf(member));
    g_free(key);
  }
  return g_variant_builder_end(&builder);
}

}  // namespace qorix::gtk
