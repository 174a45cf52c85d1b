#include "platform/gtk/WebKitView.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <utility>

#include <qorix/platform/Log.h>

#include "platform/Guarded.h"
#include "platform/gtk/EngineFaults.h"
#include "platform/gtk/FileFilter.h"
#include "platform/gtk/HostFocus.h"
#include "platform/gtk/PageColors.h"
#include "platform/gtk/PageIsolation.h"
#include "platform/gtk/PageRequests.h"
#include "platform/gtk/ScriptObject.h"
#include "platform/gtk/webprocess/Messages.h"

namespace qorix::gtk {

namespace {

constexpr const char* kHandlerName = "qorix";
constexpr const char* kMessageSignal = "script-message-received::qorix";
constexpr const char* kPageWatcherPath = "/qorix/PageWatcher.js";
constexpr const char* kOutsideClicksPath = "/qorix/OutsideClicks.js";

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

// Adds a script of the library that runs in every frame before the page's own. A null `world` is
// the page's.
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

// Only the page's process knows whether something could be copied, and asking changes nothing.
void askPage(WebKitWebView* webView, std::function<void()> onAnswer) {
  using OnAnswer = std::function<void()>;
  const auto finish = [](GObject* /*webView*/, GAsyncResult* /*result*/, gpointer data) {
    const std::unique_ptr<OnAnswer> answered(static_cast<OnAnswer*>(data));
    callGuarded(*answered);
  };
  webkit_web_view_can_execute_editing_command(webView, WEBKIT_EDITING_COMMAND_COPY, nullptr, finish,
                                              new OnAnswer(std::move(onAnswer)));
}

}  // namespace

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
      navigation_(GTK_WIDGET(webView), delegate_),
      focus_(GTK_WIDGET(webView)),
      watchdog_(std::make_shared<PageWatchdog>(
          runLoop_, [webView](auto onAnswer) { askPage(webView, std::move(onAnswer)); },
          [this] { replaceSilentPage(); })) {
  g_signal_connect(webView, "load-changed", G_CALLBACK(guarded<onLoadChanged>), this);
  g_signal_connect(webView, "load-failed", G_CALLBACK((guarded<onLoadFailed, TRUE>)), this);
  g_signal_connect(webView, "decide-policy", G_CALLBACK(guarded<onDecidePolicy>), this);
  g_signal_connect(webView, "web-process-terminated", G_CALLBACK(guarded<onProcessTerminated>),
                   this);
  for (const char* act : {"button-press-event", "key-press-event", "touch-event"}) {
    g_signal_connect(webView, act, G_CALLBACK(guarded<onUserAct>), this);
  }
  correctPainting(webView);
  refuseRequests(webView);
  watchPage();
}

void WebKitView::watchPage() {
  WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(webView());
  g_signal_connect(manager, kMessageSignal, G_CALLBACK(guarded<onMessage>), this);
  webkit_user_content_manager_register_script_message_handler_in_world(manager, kHandlerName,
                                                                       kWorldName);
  addScript(manager, kPageWatcherPath, kWorldName);
  addScript(manager, kOutsideClicksPath, nullptr);
  keepColorsOfPages(manager);
}

void WebKitView::widgetWillBeDestroyed() {
  scripts_.endPage();
  watchdog_->stop();
  navigation_.stop(widget());
  focus_.stop();
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

// Without the filter the page gets no folder, and so has no way to any file.
void WebKitView::loadWantedPage(WebKitUserContentFilter* fileFilter) {
  if (webView() == nullptr || !wantedPage_ || std::exchange(wantedPage_->isAskedFor, true)) {
    return;
  }
  if (fileFilter != nullptr) {
    webkit_user_content_manager_add_filter(webkit_web_view_get_user_content_manager(webView()),
                                           fileFilter);
  }
  setHolderHidden(false);
  watchdog_->pageIsUsed();
  scripts_.beginPage();
  webkit_web_view_load_html(
      webView(), wantedPage_->html.c_str(),
      fileFilter == nullptr ? nullptr : wantedPage_->baseUrl.absoluteString().c_str());
}

// Later: the page may be waiting for the decision that led here.
void WebKitView::endPage() {
  if (std::exchange(isPageToEnd_, true)) {
    return;
  }
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

// Another page that is to take its place, if there is one, has waited for it in vain.
void WebKitView::replaceSilentPage() {
  const auto held = self();
  endWebProcess("no answer for " + std::to_string(PageWatchdog::kTimeLimit) + " seconds");
  if (wantedPage_) {
    loadHtmlString(std::string(wantedPage_->html), Url(wantedPage_->baseUrl));
  }
}

// While hidden, a banner lets the pointer through to what lies behind it. A window stays: its user
// can close it.
void WebKitView::setHolderHidden(bool isHidden) {
  focus_.setHasPage(!isHidden);
  GtkWidget* holder = widget() == nullptr ? nullptr : gtk_widget_get_parent(widget());
  if (holder == nullptr || isHidden == isHolderHidden_ ||
      (isHidden && GTK_IS_WINDOW(gtk_widget_get_parent(holder)))) {
    return;
  }
  isHolderHidden_ = isHidden;
  const FocusReturn focus(holder);
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
  watchdog_->pageIsUsed();
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

void WebKitView::onLoadChanged(WebKitWebView* /*webView*/, int event, void* data) {
  auto* view = static_cast<WebKitView*>(data);
  if (event == WEBKIT_LOAD_STARTED) {
    view->hasLoadFailed_ = false;
  } else if (event == WEBKIT_LOAD_COMMITTED) {
    if (view->wantedPage_ && view->wantedPage_->isAskedFor) {
      view->wantedPage_.reset();
    }
    view->watchdog_->start();
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
  const auto held = std::static_pointer_cast<WebKitView>(view->self());
  return view->navigation_.answer(decision, held) ? TRUE : FALSE;
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
    view->navigation_.takeClick(value);
  }
}

gboolean WebKitView::onUserAct(WebKitWebView* /*webView*/, GdkEvent* /*event*/, void* data) {
  static_cast<WebKitView*>(data)->watchdog_->pageIsUsed();
  return GDK_EVENT_PROPAGATE;
}

void WebKitView::onProcessTerminated(WebKitWebView* /*webView*/, int reason, void* data) {
  auto* view = static_cast<WebKitView*>(data);
  const auto held = view->self();
  view->scripts_.endPage();
  view->navigation_.endPage();
  view->watchdog_->stop();
  if (!view->isPageToEnd_) {
    logLine("ZAM Ad page's web process ended: " +
            (view->endReason_.empty()
                 ? description(static_cast<WebKitWebProcessTerminationReason>(reason))
                 : view->endReason_));
  }
  view->setHolderHidden(true);
}

}  // namespace qorix::gtk
