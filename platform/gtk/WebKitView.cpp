#include "platform/gtk/WebKitView.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <utility>

#include <qorix/platform/Log.h>

#include "platform/Guarded.h"
#include "platform/gtk/FileFilter.h"
#include "platform/gtk/PageIsolation.h"
#include "platform/gtk/ScriptObject.h"
#include "platform/gtk/Unref.h"
#include "platform/gtk/WebProcessModule.h"
#include "platform/gtk/webprocess/Messages.h"

namespace qorix::gtk {

namespace {

constexpr const char* kHandlerName = "qorix";
constexpr const char* kMessageSignal = "script-message-received::qorix";
constexpr const char* kPageWatcherPath = "/qorix/PageWatcher.js";
constexpr const char* kOutsideClicksPath = "/qorix/OutsideClicks.js";

gboolean refuse() { return TRUE; }

// No dialog is shown, and a page that asks whether it may be left is always left.
gboolean answerScriptDialog(WebKitWebView*, WebKitScriptDialog* dialog) {
  if (webkit_script_dialog_get_dialog_type(dialog) == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
    webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
  }
  return TRUE;
}

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

std::string description(WebKitWebProcessTerminationReason reason) {
  switch (reason) {
    case WEBKIT_WEB_PROCESS_CRASHED:
      return "crashed";
    case WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT:
      return "it used more than " + std::to_string(kPageMemoryLimit) + " MB of memory";
    case WEBKIT_WEB_PROCESS_TERMINATED_BY_API:
      return "terminated";
  }
  return "unknown reason";
}

WebKitNavigationAction* actionOf(WebKitPolicyDecision* decision) {
  return webkit_navigation_policy_decision_get_navigation_action(
      WEBKIT_NAVIGATION_POLICY_DECISION(decision));
}

std::string requestedUri(WebKitPolicyDecision* decision) {
  const char* uri =
      webkit_uri_request_get_uri(webkit_navigation_action_get_request(actionOf(decision)));
  return uri == nullptr ? "" : uri;
}

// A script of the library that runs in every frame before the page's own; no world is the page's.
void addScript(WebKitUserContentManager* manager, const char* path, const char* world) {
  GBytes* source = g_resources_lookup_data(path, G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr);
  const auto* text = static_cast<const char*>(g_bytes_get_data(source, nullptr));
  constexpr auto kFrames = WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES;
  constexpr auto kTime = WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START;
  WebKitUserScript* script =
      world == nullptr
          ? webkit_user_script_new(text, kFrames, kTime, nullptr, nullptr)
          : webkit_user_script_new_for_world(text, kFrames, kTime, world, nullptr, nullptr);
  webkit_user_content_manager_add_script(manager, script);
  webkit_user_script_unref(script);
  g_bytes_unref(source);
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

WebKitWebContext* adWebContext() {
  static WebKitWebContext* const context = [] {
    WebKitWebContext* fresh = newIsolatedWebContext();
    loadModuleIntoWebProcesses(fresh);
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
      delegate_(std::move(delegate)),
      scripts_(runLoop_),
      loadReports_(std::make_shared<LoadReports>(
          runLoop_, [this](auto act) { whenPageAnswers(std::move(act)); },
          [this](const WebFrame& frame) { reportFinishedLoad(frame); })),
      userActs_(GTK_WIDGET(webView)),
      watchdog_(webView, [this] { replaceSilentPage(); }) {
  g_signal_connect(webView, "load-changed", G_CALLBACK(guarded<onLoadChanged>), this);
  g_signal_connect(webView, "load-failed", G_CALLBACK((guarded<onLoadFailed, TRUE>)), this);
  g_signal_connect(webView, "decide-policy", G_CALLBACK(guarded<onDecidePolicy>), this);
  g_signal_connect(webView, "web-process-terminated", G_CALLBACK(guarded<onProcessTerminated>),
                   this);
  g_signal_connect(webView, "draw", G_CALLBACK(drawAll), nullptr);
  g_signal_connect_after(webView, "map", G_CALLBACK(paintAnew), nullptr);
  refuseRequests();
  watchPage();
}

// An advertisement opens nothing of its own on the user's desktop and learns nothing from it.
void WebKitView::refuseRequests() {
  for (const char* signal : {"context-menu", "print", "enter-fullscreen", "show-notification"}) {
    g_signal_connect(widget(), signal, G_CALLBACK(refuse), nullptr);
  }
  g_signal_connect(widget(), "script-dialog", G_CALLBACK(answerScriptDialog), nullptr);
  g_signal_connect(widget(), "permission-request", G_CALLBACK(denyPermission), nullptr);
  g_signal_connect(widget(), "authenticate", G_CALLBACK(cancelAuthentication), nullptr);
  g_signal_connect(widget(), "run-file-chooser", G_CALLBACK(cancelFileChooser), nullptr);
  g_signal_connect(widget(), "run-color-chooser", G_CALLBACK(cancelColorChooser), nullptr);
}

void WebKitView::watchPage() {
  WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(webView());
  g_signal_connect(manager, kMessageSignal, G_CALLBACK(guarded<onMessage>), this);
  webkit_user_content_manager_register_script_message_handler_in_world(manager, kHandlerName,
                                                                       kWorldName);
  addScript(manager, kPageWatcherPath, kWorldName);
  addScript(manager, kOutsideClicksPath, nullptr);
}

void WebKitView::widgetWillBeDestroyed() {
  scripts_.endPage();
  scripts_.endPage();
  watchdog_.stop();
  userActs_.stop(widget());
  g_signal_handlers_disconnect_by_data(widget(), this);
  g_signal_handlers_disconnect_by_data(webkit_web_view_get_user_content_manager(webView()), this);
}

WebKitWebView* WebKitView::webView() const {
  return widget() == nullptr ? nullptr : WEBKIT_WEB_VIEW(widget());
}

void WebKitView::loadHtmlString(const std::string& html, const Url& baseUrl) {
  isPageToEnd_ = false;
  wantedPage_ = WantedPage{html, baseUrl};
  FileFilter::ofLibrary().whenMade(
      [view = std::weak_ptr<View>(self())](WebKitUserContentFilter* fileFilter) {
        if (const auto webView = std::static_pointer_cast<WebKitView>(view.lock())) {
          webView->loadWantedPage(fileFilter);
        }
      });
}

// Without the filter the page has no folder, and so no way to files at all.
void WebKitView::loadWantedPage(WebKitUserContentFilter* fileFilter) {
  if (webView() == nullptr || !wantedPage_ || std::exchange(wantedPage_->isAskedFor, true)) {
    return;
  }
  if (fileFilter != nullptr) {
    webkit_user_content_manager_add_filter(webkit_web_view_get_user_content_manager(webView()),
                                           fileFilter);
  }
  setHolderHidden(false);
  scripts_.beginPage();
  webkit_web_view_load_html(
      webView(), wantedPage_->html.c_str(),
      fileFilter == nullptr ? nullptr : wantedPage_->baseUrl.absoluteString().c_str());
}

// Later: the page may be waiting for an answer to what it was ended for.
void WebKitView::endPage() {
  isPageToEnd_ = true;
  wantedPage_.reset();
  runLoop_->dispatchAsync([view = std::weak_ptr<View>(self())] {
    const auto webView = std::static_pointer_cast<WebKitView>(view.lock());
    if (webView != nullptr && webView->isPageToEnd_) {
      webView->endWebProcess("the page is not needed");
      webView->setHolderHidden(true);
    }
  });
}

void WebKitView::endWebProcess(const std::string& reason) {
  if (webView() != nullptr) {
    endReason_ = reason;
    webkit_web_view_terminate_web_process(webView());
    endReason_.clear();
  }
}

// The page that takes its place, if there is one, waits for it in vain.
void WebKitView::replaceSilentPage() {
  const auto held = self();
  endWebProcess("no answer for " + std::to_string(PageWatchdog::kTimeLimit) + " seconds");
  if (wantedPage_) {
    loadHtmlString(std::string(wantedPage_->html), Url(wantedPage_->baseUrl));
  }
}

// Hidden, a banner lets the pointer through to what lies behind it. A window can be closed.
void WebKitView::setHolderHidden(bool isHidden) {
  GtkWidget* holder = widget() == nullptr ? nullptr : gtk_widget_get_parent(widget());
  if (holder == nullptr || isHidden == isHolderHidden_ ||
      (isHidden && GTK_IS_WINDOW(gtk_widget_get_parent(holder)))) {
    return;
  }
  isHolderHidden_ = isHidden;
  gtk_widget_set_no_show_all(holder, isHidden);
  gtk_widget_set_visible(holder, !isHidden);
}

void WebKitView::setDrawsBackground(bool draws) {
  if (webView() != nullptr) {
    const GdkRGBA color = draws ? GdkRGBA{1, 1, 1, 1} : GdkRGBA{0, 0, 0, 0};
    webkit_web_view_set_background_color(webView(), &color);
  }
}

std::string WebKitView::stringByEvaluatingJavaScriptFromString(const std::string& script) {
  const auto held = self();
  return webView() == nullptr ? std::string() : scripts_.evaluate(webView(), script);
}

void WebKitView::reportFinishedLoad(const WebFrame& frame) {
  const auto held = std::static_pointer_cast<WebKitView>(self());
  if (const auto delegate = delegate_.lock()) {
    delegate->webViewDidFinishLoadForFrame(held, frame);
  }
}

void WebKitView::whenPageAnswers(std::function<void(bool isThere)> act) {
  if (webView() == nullptr) {
    act(false);
  } else {
    scripts_.whenPageAnswers(webView(), std::move(act));
  }
}

void WebKitView::performWhenPageAnswers(std::function<void()> task) {
  whenPageAnswers([runLoop = runLoop_, task = std::move(task)](bool isThere) {
    if (isThere) {
      runLoop->performAfterDelay(0, task);
    }
  });
}

bool WebKitView::decideNavigation(WebKitPolicyDecision* decision) {
  if (delegate_.expired()) {
    return false;
  }
  WebKitNavigationAction* action = actionOf(decision);
  const int type = static_cast<int>(webkit_navigation_action_get_navigation_type(action));
  Dictionary information = {{kWebActionNavigationTypeKey, type}};
  if (type != static_cast<int>(WebNavigationType::linkClicked)) {
    askDelegate(decision, std::move(information), nullptr);
    return true;
  }
  information[kWebActionIsUserActKey] =
      webkit_navigation_action_is_user_gesture(action) != FALSE && userActs_.take();
  const std::shared_ptr<WebKitPolicyDecision> kept(
      static_cast<WebKitPolicyDecision*>(g_object_ref(decision)), Unref());
  clicks_.judge(requestedUri(decision), [view = std::weak_ptr<View>(self()), kept,
                                         information](const PageClicks::Click* click) {
    if (const auto self = std::static_pointer_cast<WebKitView>(view.lock())) {
      self->askDelegate(kept.get(), information, click);
    }
  });
  return true;
}

void WebKitView::askDelegate(WebKitPolicyDecision* decision, Dictionary information,
                             const PageClicks::Click* click) {
  PolicyListener listener(decision);
  const auto delegate = delegate_.lock();
  if (delegate == nullptr) {
    return;
  }
  WebFrame frame;
  if (click != nullptr) {
    frame.isMainFrame = click->isInMainFrame;
    information[kWebActionElementKey] = Dictionary{{kWebElementDomNodeKey, click->node}};
  }
  delegate->webViewDecidePolicyForNavigationAction(
      std::static_pointer_cast<WebKitView>(self()), information,
      Url::fromWebEngine(requestedUri(decision)), frame, listener);
}

void WebKitView::onLoadChanged(WebKitWebView* /*webView*/, int event, void* data) {
  auto* view = static_cast<WebKitView*>(data);
  if (event == WEBKIT_LOAD_STARTED) {
    view->hasLoadFailed_ = false;
  } else if (event == WEBKIT_LOAD_COMMITTED) {
    if (view->wantedPage_ && view->wantedPage_->isAskedFor) {
      view->wantedPage_.reset();
    }
    view->watchdog_.start();
  } else if (event == WEBKIT_LOAD_FINISHED && !view->hasLoadFailed_) {
    view->loadReports_->add({.isMainFrame = true});
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
  const auto held = view->self();
  JSCValue* value = webkit_javascript_result_get_js_value(message);
  const std::string event = textProperty(value, "event");
  if (event == "load") {
    view->loadReports_->add({.isMainFrame = false});
  } else {
    view->clicks_.take(value);
  }
}

void WebKitView::onProcessTerminated(WebKitWebView* /*webView*/, int reason, void* data) {
  auto* view = static_cast<WebKitView*>(data);
  const auto held = view->self();
  view->scripts_.endPage();
  view->clicks_.endAll();
  view->watchdog_.stop();
  if (!view->isPageToEnd_) {
    logLine("ZAM Ad page's web process ended: " +
            (view->endReason_.empty()
                 ? description(static_cast<WebKitWebProcessTerminationReason>(reason))
                 : view->endReason_));
  }
  view->setHolderHidden(true);
}

}  // namespace qorix::gtk
