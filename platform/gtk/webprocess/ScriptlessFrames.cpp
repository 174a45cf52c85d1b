#include "platform/gtk/webprocess/ScriptlessFrames.h"

#include <webkit2/webkit-web-extension.h>

#include <memory>

#include "platform/gtk/Unref.h"
#include "platform/gtk/webprocess/Messages.h"

// The engine's own objects for a page's nodes are deprecated in favour of scripts, but where no
// script can listen there is no other way.
G_GNUC_BEGIN_IGNORE_DEPRECATIONS

namespace qorix::gtk {

namespace {

constexpr const char* kIsOwnedKey = "qorix-is-owned";
constexpr const char* kIsWatchedKey = "qorix-is-watched";

WebKitScriptWorld* world() {
  static WebKitScriptWorld* const watchersWorld = webkit_script_world_new_with_name(kWorldName);
  return watchersWorld;
}

/// Reports the events of frames that run no scripts to the watcher of the frame around them. Keeps
/// neither the watcher nor its frame alive.
class Listener {
 public:
  Listener(WebKitFrame* frame, JSCValue* onClick, JSCValue* onLoad)
      : onClick_(jsc_weak_value_new(onClick)), onLoad_(jsc_weak_value_new(onLoad)) {
    g_weak_ref_init(&frame_, frame);
  }
  ~Listener() { g_weak_ref_clear(&frame_); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  void clicked(WebKitDOMEvent* event) {
    const std::unique_ptr<WebKitFrame, Unref> frame(
        static_cast<WebKitFrame*>(g_weak_ref_get(&frame_)));
    const std::unique_ptr<JSCValue, Unref> onClick(jsc_weak_value_get_value(onClick_.get()));
    WebKitDOMEventTarget* target = webkit_dom_event_get_target(event);
    if (frame == nullptr || onClick == nullptr || !WEBKIT_DOM_IS_NODE(target) ||
        !WEBKIT_DOM_IS_MOUSE_EVENT(event)) {
      return;
    }
    auto* mouse = WEBKIT_DOM_MOUSE_EVENT(event);
    const std::unique_ptr<JSCValue, Unref> node(
        webkit_frame_get_js_value_for_dom_object_in_script_world(
            frame.get(), WEBKIT_DOM_OBJECT(target), world()));
    const gboolean isByPointer = webkit_dom_ui_event_get_detail(WEBKIT_DOM_UI_EVENT(event)) != 0;
    const std::unique_ptr<JSCValue, Unref> nothing(jsc_value_function_call(
        onClick.get(), JSC_TYPE_VALUE, node.get(), G_TYPE_BOOLEAN, isByPointer, G_TYPE_LONG,
        webkit_dom_mouse_event_get_client_x(mouse), G_TYPE_LONG,
        webkit_dom_mouse_event_get_client_y(mouse), G_TYPE_NONE));
  }

  void loaded() {
    const std::unique_ptr<JSCValue, Unref> onLoad(jsc_weak_value_get_value(onLoad_.get()));
    if (onLoad != nullptr) {
      const std::unique_ptr<JSCValue, Unref> nothing(
          jsc_value_function_call(onLoad.get(), G_TYPE_NONE));
    }
  }

 private:
  GWeakRef frame_;
  const std::unique_ptr<JSCWeakValue, Unref> onClick_;
  const std::unique_ptr<JSCWeakValue, Unref> onLoad_;
};

using SharedListener = std::shared_ptr<Listener>;

/// The document that a frame's element shows; null if `element` is no such element.
WebKitDOMDocument* documentIn(gpointer element) {
  if (WEBKIT_DOM_IS_HTML_IFRAME_ELEMENT(element)) {
    return webkit_dom_html_iframe_element_get_content_document(
        WEBKIT_DOM_HTML_IFRAME_ELEMENT(element));
  }
  if (WEBKIT_DOM_IS_HTML_FRAME_ELEMENT(element)) {
    return webkit_dom_html_frame_element_get_content_document(
        WEBKIT_DOM_HTML_FRAME_ELEMENT(element));
  }
  if (WEBKIT_DOM_IS_HTML_OBJECT_ELEMENT(element)) {
    return webkit_dom_html_object_element_get_content_document(
        WEBKIT_DOM_HTML_OBJECT_ELEMENT(element));
  }
  return nullptr;
}

bool hasLoaded(WebKitDOMDocument* document) {
  const std::unique_ptr<char, decltype(&g_free)> state(
      webkit_dom_document_get_ready_state(document), g_free);
  return g_strcmp0(state.get(), "complete") == 0;
}

using OnEvent = void (*)(WebKitDOMEventTarget*, WebKitDOMEvent*, SharedListener*);

void listen(WebKitDOMDocument* document, const char* event, OnEvent onEvent,
            const SharedListener& listener) {
  GClosure* closure =
      g_cclosure_new(G_CALLBACK(onEvent), new SharedListener(listener),
                     [](gpointer data, GClosure*) { delete static_cast<SharedListener*>(data); });
  webkit_dom_event_target_add_event_listener_with_closure(WEBKIT_DOM_EVENT_TARGET(document), event,
                                                          closure, TRUE);
}

void onClick(WebKitDOMEventTarget* /*document*/, WebKitDOMEvent* event, SharedListener* listener) {
  (*listener)->clicked(event);
}

bool watchFrame(gpointer element, const SharedListener& listener);

void onLoad(WebKitDOMEventTarget* /*document*/, WebKitDOMEvent* event, SharedListener* listener) {
  if (watchFrame(webkit_dom_event_get_target(event), *listener)) {
    (*listener)->loaded();
  }
}

void onPointer(WebKitDOMEventTarget* /*document*/, WebKitDOMEvent* event,
               SharedListener* listener) {
  watchFrame(webkit_dom_event_get_target(event), *listener);
}

// For frames that loaded before they were watched.
void watchFramesIn(WebKitDOMDocument* document, const SharedListener& listener) {
  for (const char* tag : {"iframe", "frame", "object"}) {
    const std::unique_ptr<WebKitDOMHTMLCollection, Unref> elements(
        webkit_dom_document_get_elements_by_tag_name_as_html_collection(document, tag));
    const gulong count = webkit_dom_html_collection_get_length(elements.get());
    for (gulong i = 0; i < count; ++i) {
      WebKitDOMNode* element = webkit_dom_html_collection_item(elements.get(), i);
      if (watchFrame(element, listener) && hasLoaded(documentIn(element))) {
        listener->loaded();
      }
    }
  }
}

bool watchFrame(gpointer element, const SharedListener& listener) {
  WebKitDOMDocument* document = documentIn(element);
  if (document == nullptr || g_object_get_data(G_OBJECT(document), kIsOwnedKey) != nullptr) {
    return false;
  }
  if (g_object_get_data(G_OBJECT(document), kIsWatchedKey) == nullptr) {
    g_object_set_data(G_OBJECT(document), kIsWatchedKey, document);
    listen(document, "click", onClick, listener);
    listen(document, "auxclick", onClick, listener);
    listen(document, "load", onLoad, listener);
    listen(document, "mouseover", onPointer, listener);
    watchFramesIn(document, listener);
  }
  return true;
}

void ownFrame(JSCValue* document, gpointer /*data*/) {
  if (WebKitDOMNode* node = webkit_dom_node_for_js_value(document)) {
    g_object_set_data(G_OBJECT(node), kIsOwnedKey, node);
  }
}

gboolean watchFrameOf(JSCValue* element, JSCValue* onClick, JSCValue* onLoad,
                      WebKitFrame* ofWatcher) {
  WebKitDOMNode* node = webkit_dom_node_for_js_value(element);
  return watchFrame(node, std::make_shared<Listener>(ofWatcher, onClick, onLoad)) ? TRUE : FALSE;
}

void onWindowCleared(WebKitScriptWorld* /*world*/, WebKitWebPage* /*page*/, WebKitFrame* frame,
                     gpointer /*data*/) {
  const std::unique_ptr<JSCContext, Unref> context(
      webkit_frame_get_js_context_for_script_world(frame, world()));
  const std::unique_ptr<JSCValue, Unref> own(
      jsc_value_new_function(context.get(), nullptr, G_CALLBACK(ownFrame), nullptr, nullptr,
                             G_TYPE_NONE, 1, JSC_TYPE_VALUE));
  jsc_context_set_value(context.get(), "qorixOwnsFrame", own.get());
  const std::unique_ptr<JSCValue, Unref> watch(jsc_value_new_function(
      context.get(), nullptr, G_CALLBACK(watchFrameOf), g_object_ref(frame), g_object_unref,
      G_TYPE_BOOLEAN, 3, JSC_TYPE_VALUE, JSC_TYPE_VALUE, JSC_TYPE_VALUE));
  jsc_context_set_value(context.get(), "qorixWatchFrame", watch.get());
}

}  // namespace

void watchScriptlessFrames() {
  g_signal_connect(world(), "window-object-cleared", G_CALLBACK(onWindowCleared), nullptr);
}

}  // namespace qorix::gtk

G_GNUC_END_IGNORE_DEPRECATIONS
