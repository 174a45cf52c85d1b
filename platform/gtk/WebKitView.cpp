#include "platform/gtk/WebKitView.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <utility>

#include "platform/Log.h"
#include "platform/gtk/Unref.h"

namespace qorix::gtk {

namespace {

constexpr const char* kWorldName = "qorix";
constexpr const char* kHandlerName = "qorix";
constexpr const char* kMessageSignal = "script-message-received::qorix";
constexpr const char* kPageWatcherPath = "/qorix/PageWatcher.js";

gboolean refuse() { return TRUE; }

gboolean denyPermission(WebKitWebView*, WebKitPermissionRequest* request) {
  webkit_permission_request_deny(request);
  return TRUE;
}

gboolean cancelAuthentication(WebKitWebView*, WebKitAuthenticationRequest* request) {
  webkit_authentication_request_cancel(request);
  return TRUE;
}

gboolean cancelFileChooser(WebKitWebView*, WebKitFileChooserRequest* request) {
  webkit_file_chooser_request_cancel(request);
  return TRUE;
}

gboolean cancelColorChooser(WebKitWebView*, WebKitColorChooserRequest* request) {
  webkit_color_chooser_request_cancel(request);
  return TRUE;
}

void cancelDownload(WebKitWebContext*, WebKitDownload* download) {
  webkit_download_cancel(download);
}

// Asked for a part of its view, the engine paints the part that is as far from the other end, top
// for bottom: it is asked for all of it, and what is needed is taken from that.
gboolean drawAll(GtkWidget* widget, cairo_t* cairo) {
  const GdkRectangle all = {0, 0, gtk_widget_get_allocated_width(widget),
                            gtk_widget_get_allocated_height(widget)};
  GdkRectangle part;
  if (gdk_cairo_get_clip_rectangle(cairo, &part) == FALSE ||
      gdk_rectangle_equal(&part, &all) != FALSE) {
    return FALSE;
  }
  const cairo_rectangle_t extents = {0, 0, static_cast<double>(all.width),
                                     static_cast<double>(all.height)};
  cairo_surface_t* recording = cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents);
  cairo_t* recorder = cairo_create(recording);
  GTK_WIDGET_GET_CLASS(widget)->draw(widget, recorder);
  cairo_destroy(recorder);
  cairo_set_source_surface(cairo, recording, 0, 0);
  cairo_paint(cairo);
  cairo_surface_destroy(recording);
  return TRUE;
}

// Together with its native window, when the host moves it to another place, the engine's view loses
// its picture, and a page that does not change would not be painted again. A background that
// differs and does not makes it paint.
void paintAnew(GtkWidget* widget, gpointer) {
  WebKitWebView* webView = WEBKIT_WEB_VIEW(widget);
  GdkRGBA color;
  webkit_web_view_get_background_color(webView, &color);
  GdkRGBA other = color;
  other.blue = color.blue > 0.5 ? color.blue - 0.01 : color.blue + 0.01;
  webkit_web_view_set_background_color(webView, &other);
  webkit_web_view_set_background_color(webView, &color);
}

const char* description(WebKitWebProcessTerminationReason reason) {
  switch (reason) {
    case WEBKIT_WEB_PROCESS_CRASHED:
      return "crashed";
    case WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT:
      return "out of memory";
    case WEBKIT_WEB_PROCESS_TERMINATED_BY_API:
      return "terminated";
  }
  return "unknown reason";
}

using Script = std::unique_ptr<JSCValue, Unref>;

std::string textOf(JSCValue* value) {
  GBytes* bytes = jsc_value_to_string_as_bytes(value);
  if (bytes == nullptr) {
    return {};
  }
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
  std::string text(data == nullptr ? "" : data, size);
  g_bytes_unref(bytes);
  return text;
}

Script property(JSCValue* object, const char* name) {
  return Script(jsc_value_object_get_property(object, name));
}

std::string textProperty(JSCValue* object, const char* name) {
  return textOf(property(object, name).get());
}

bool flagProperty(JSCValue* object, const char* name) {
  return jsc_value_to_boolean(property(object, name).get()) != FALSE;
}

std::shared_ptr<DomNode> nodeOf(JSCValue* message) {
  std::shared_ptr<DomNode> element;
  if (flagProperty(message, "isHtmlElement")) {
    element = std::make_shared<DomHtmlElement>(textProperty(message, "id"),
                                               textProperty(message, "className"));
  } else {
    element = std::make_shared<DomNode>();
  }
  return flagProperty(message, "isText") ? std::make_shared<DomText>(element) : element;
}

class PolicyListener : public WebPolicyDecisionListener {
 public:
  explicit PolicyListener(WebKitPolicyDecision* decision) : decision_(decision) {}
  ~PolicyListener() override { use(); }  // unless the delegate has answered
  PolicyListener(const PolicyListener&) = delete;
  PolicyListener& operator=(const PolicyListener&) = delete;

  void use() override { answer(webkit_policy_decision_use); }
  void ignore() override { answer(webkit_policy_decision_ignore); }

 private:
  void answer(void (*send)(WebKitPolicyDecision*)) {
    if (decision_ != nullptr) {
      send(std::exchange(decision_, nullptr));
    }
  }

  WebKitPolicyDecision* decision_;
};

}  // namespace

struct WebKitView::Evaluation {
  bool isDone = false;
  std::string result;
};

WebKitWebContext* adWebContext() {
  static WebKitWebContext* const context = [] {
    WebKitWebContext* fresh = webkit_web_context_new_ephemeral();
    g_signal_connect(fresh, "download-started", G_CALLBACK(cancelDownload), nullptr);
    return fresh;
  }();
  return context;
}

std::shared_ptr<WebKitView> WebKitView::create(WebKitWebView* webView,
                                               std::shared_ptr<MainContextRunLoop> runLoop,
                                               std::weak_ptr<WebViewDelegate> delegate) {
  return makeNativeView<WebKitView>(webView, std::move(runLoop), std::move(delegate));
}

WebKitView::WebKitView(WebKitWebView* webView, std::shared_ptr<MainContextRunLoop> runLoop,
                       std::weak_ptr<WebViewDelegate> delegate)
    : WidgetView(GTK_WIDGET(webView), Ownership::widgetOwnsView),
      runLoop_(std::move(runLoop)),
      delegate_(std::move(delegate)) {
  g_signal_connect(webView, "load-changed", G_CALLBACK(onLoadChanged), this);
  g_signal_connect(webView, "load-failed", G_CALLBACK(onLoadFailed), this);
  g_signal_connect(webView, "decide-policy", G_CALLBACK(onDecidePolicy), this);
  g_signal_connect(webView, "web-process-terminated", G_CALLBACK(onProcessTerminated), this);
  g_signal_connect(webView, "draw", G_CALLBACK(drawAll), nullptr);
  g_signal_connect_after(webView, "map", G_CALLBACK(paintAnew), nullptr);
  refuseRequests();
  watchPage();
}

// An advertisement opens nothing of its own on the user's desktop and learns nothing from it.
void WebKitView::refuseRequests() {
  for (const char* signal :
       {"script-dialog", "context-menu", "print", "enter-fullscreen", "show-notification"}) {
    g_signal_connect(widget(), signal, G_CALLBACK(refuse), nullptr);
  }
  g_signal_connect(widget(), "permission-request", G_CALLBACK(denyPermission), nullptr);
  g_signal_connect(widget(), "authenticate", G_CALLBACK(cancelAuthentication), nullptr);
  g_signal_connect(widget(), "run-file-chooser", G_CALLBACK(cancelFileChooser), nullptr);
  g_signal_connect(widget(), "run-color-chooser", G_CALLBACK(cancelColorChooser), nullptr);
}

void WebKitView::watchPage() {
  WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(webView());
  g_signal_connect(manager, kMessageSignal, G_CALLBACK(onMessage), this);
  webkit_user_content_manager_register_script_message_handler_in_world(manager, kHandlerName,
                                                                       kWorldName);
  GBytes* source = g_resources_lookup_data(kPageWatcherPath, G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr);
  WebKitUserScript* script = webkit_user_script_new_for_world(
      static_cast<const char*>(g_bytes_get_data(source, nullptr)),
      WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES, WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START,
      kWorldName, nullptr, nullptr);
  webkit_user_content_manager_add_script(manager, script);
  webkit_user_script_unref(script);
  g_bytes_unref(source);
}

void WebKitView::widgetWillBeDestroyed() {
  g_signal_handlers_disconnect_by_data(widget(), this);
  g_signal_handlers_disconnect_by_data(webkit_web_view_get_user_content_manager(webView()), this);
}

WebKitWebView* WebKitView::webView() const {
  return widget() == nullptr ? nullptr : WEBKIT_WEB_VIEW(widget());
}

void WebKitView::loadHtmlString(const std::string& html, const Url& baseUrl) {
  if (webView() != nullptr) {
    webkit_web_view_load_html(webView(), html.c_str(), baseUrl.absoluteString().c_str());
  }
}

void WebKitView::setDrawsBackground(bool draws) {
  if (webView() != nullptr) {
    const GdkRGBA color = draws ? GdkRGBA{1, 1, 1, 1} : GdkRGBA{0, 0, 0, 0};
    webkit_web_view_set_background_color(webView(), &color);
  }
}

std::string WebKitView::stringByEvaluatingJavaScriptFromString(const std::string& script) {
  if (webView() == nullptr || !outstanding_.expired()) {
    return {};
  }
  const auto held = self();
  const auto evaluation = std::make_shared<Evaluation>();
  const auto finish = [](GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<std::shared_ptr<Evaluation>> finished(
        static_cast<std::shared_ptr<Evaluation>*>(data));
    const Script value(
        webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), result, nullptr));
    JSCValue* text = value.get();
    if (text != nullptr &&
        (jsc_value_is_string(text) || jsc_value_is_number(text) || jsc_value_is_boolean(text))) {
      (*finished)->result = textOf(text);
    }
    (*finished)->isDone = true;
  };
  webkit_web_view_evaluate_javascript(webView(), script.data(), static_cast<gssize>(script.size()),
                                      nullptr, nullptr, nullptr, finish,
                                      new std::shared_ptr<Evaluation>(evaluation));
  const MainContextRunLoop::Hold hold(*runLoop_);
  bool isTimeUp = false;
  const guint timer = g_timeout_add(
      static_cast<guint>(kScriptTimeLimit * 1000),
      [](gpointer data) -> gboolean {
        *static_cast<bool*>(data) = true;
        return G_SOURCE_CONTINUE;
      },
      &isTimeUp);
  while (!evaluation->isDone && !isTimeUp && widget() != nullptr) {
    g_main_context_iteration(nullptr, TRUE);
  }
  g_source_remove(timer);
  if (!evaluation->isDone) {
    outstanding_ = evaluation;
  }
  return evaluation->result;
}

void WebKitView::reportFinishedLoad(const WebFrame& frame) {
  runLoop_->dispatchAsync([view = std::weak_ptr<View>(self()), frame] {
    const auto webView = std::static_pointer_cast<WebKitView>(view.lock());
    const auto delegate = webView == nullptr ? nullptr : webView->delegate_.lock();
    if (delegate != nullptr) {
      delegate->webViewDidFinishLoadForFrame(webView, frame);
    }
  });
}

bool WebKitView::decideNavigation(WebKitPolicyDecision* decision) {
  const auto delegate = delegate_.lock();
  if (delegate == nullptr) {
    return false;
  }
  WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(
      WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const int type = static_cast<int>(webkit_navigation_action_get_navigation_type(action));
  const char* uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  Dictionary information = {{kWebActionNavigationTypeKey, type}};
  WebFrame frame;
  if (type == static_cast<int>(WebNavigationType::linkClicked) && click_.has_value()) {
    const Click click = *std::exchange(click_, std::nullopt);
    frame.isMainFrame = click.isInMainFrame;
    information[kWebActionElementKey] = Dictionary{{kWebElementDomNodeKey, click.node}};
  }
  PolicyListener listener(decision);
  delegate->webViewDecidePolicyForNavigationAction(
      std::static_pointer_cast<WebKitView>(self()), information,
      Url::fromWebEngine(uri == nullptr ? "" : uri), frame, listener);
  return true;
}

void WebKitView::onLoadChanged(WebKitWebView* /*webView*/, int event, void* data) {
  auto* view = static_cast<WebKitView*>(data);
  if (event == WEBKIT_LOAD_STARTED) {
    view->hasLoadFailed_ = false;
  } else if (event == WEBKIT_LOAD_FINISHED && !view->hasLoadFailed_) {
    view->reportFinishedLoad({.isMainFrame = true});
  }
}

// The engine would show a page of its own in place of the advertisement.
gboolean WebKitView::onLoadFailed(WebKitWebView* /*webView*/, int /*event*/, const char* /*uri*/,
                                  GError* /*error*/, void* data) {
  static_cast<WebKitView*>(data)->hasLoadFailed_ = true;
  return TRUE;
}

gboolean WebKitView::onDecidePolicy(WebKitWebView* /*webView*/, WebKitPolicyDecision* decision,
                                    int type, void* data) {
  if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) {
    return FALSE;
  }
  auto* view = static_cast<WebKitView*>(data);
  const auto held = view->self();
  return view->decideNavigation(decision) ? TRUE : FALSE;
}

void WebKitView::onMessage(WebKitUserContentManager* /*manager*/, WebKitJavascriptResult* message,
                           void* data) {
  auto* view = static_cast<WebKitView*>(data);
  JSCValue* value = webkit_javascript_result_get_js_value(message);
  const std::string event = textProperty(value, "event");
  if (event == "click") {
    view->click_ = Click{flagProperty(value, "isMainFrame"), nodeOf(value)};
  } else if (event == "noClick") {
    view->click_.reset();
  } else if (event == "load") {
    view->reportFinishedLoad({.isMainFrame = false});
  }
}

void WebKitView::onProcessTerminated(WebKitWebView* /*webView*/, int reason, void* data) {
  static_cast<WebKitView*>(data)->click_.reset();
  logLine(std::string("ZAM Ad page's web process ended: ") +
          description(static_cast<WebKitWebProcessTerminationReason>(reason)));
}

}  // namespace qorix::gtk
