// Loaded by the engine into each web process of the library's pages.

#include <webkit2/webkit-web-extension.h>

#include <memory>

#include "platform/gtk/Unref.h"
#include "platform/gtk/webprocess/Messages.h"
#include "platform/gtk/webprocess/ScriptlessFrames.h"

namespace {

using qorix::gtk::kEvaluateMessage;
using qorix::gtk::Unref;

// Deprecated without a successor.
G_GNUC_BEGIN_IGNORE_DEPRECATIONS
WebKitFrame* mainFrame(WebKitWebPage* page) { return webkit_web_page_get_main_frame(page); }
G_GNUC_END_IGNORE_DEPRECATIONS

GBytes* textOf(JSCValue* value) {
  const bool isText =
      jsc_value_is_string(value) || jsc_value_is_number(value) || jsc_value_is_boolean(value);
  GBytes* text = isText ? jsc_value_to_string_as_bytes(value) : nullptr;
  return text == nullptr ? g_bytes_new(nullptr, 0) : text;
}

// The engine's own call for applications lets a script act as if the user had just clicked. A
// script that is evaluated here gets no such right.
GBytes* evaluate(WebKitWebPage* page, const char* script, gsize size) {
  const std::unique_ptr<JSCContext, Unref> context(webkit_frame_get_js_context(mainFrame(page)));
  const std::unique_ptr<JSCValue, Unref> value(
      jsc_context_evaluate(context.get(), script, static_cast<gssize>(size)));
  GBytes* text = textOf(value.get());
  jsc_context_clear_exception(context.get());
  return text;
}

gboolean onMessage(WebKitWebPage* page, WebKitUserMessage* message, gpointer /*data*/) {
  GVariant* script = webkit_user_message_get_parameters(message);
  if (g_strcmp0(webkit_user_message_get_name(message), kEvaluateMessage) != 0 ||
      script == nullptr || !g_variant_is_of_type(script, G_VARIANT_TYPE_BYTESTRING)) {
    return FALSE;
  }
  gsize size = 0;
  const void* bytes = g_variant_get_fixed_array(script, &size, 1);
  GBytes* text = evaluate(page, size == 0 ? "" : static_cast<const char*>(bytes), size);
  webkit_user_message_send_reply(
      message,
      webkit_user_message_new(kEvaluateMessage,
                              g_variant_new_from_bytes(G_VARIANT_TYPE_BYTESTRING, text, TRUE)));
  g_bytes_unref(text);
  return TRUE;
}

void onPageCreated(WebKitWebExtension* /*extension*/, WebKitWebPage* page, gpointer /*data*/) {
  g_signal_connect(page, "user-message-received", G_CALLBACK(onMessage), nullptr);
}

}  // namespace

extern "C" G_MODULE_EXPORT void webkit_web_extension_initialize(WebKitWebExtension* extension) {
  g_signal_connect(extension, "page-created", G_CALLBACK(onPageCreated), nullptr);
  qorix::gtk::watchScriptlessFrames();
}
