#include "platform/gtk/ScriptEvaluation.h"

#include <webkit2/webkit2.h>

#include <algorithm>
#include <optional>
#include <utility>

#include <qorix/platform/Log.h>
#include <qorix/platform/WebView.h>

#include "platform/gtk/Unref.h"
#include "platform/gtk/WebProcessModule.h"
#include "platform/gtk/webprocess/Messages.h"

namespace qorix::gtk {

struct ScriptEvaluation::Pending {
  bool isDone = false;
  std::string result;
};

namespace {

/// Takes the text of a script's value; absent if the page is gone.
using Finish = std::function<void(std::optional<std::string> text)>;

std::string bytesOf(WebKitUserMessage* reply) {
  GVariant* bytes = reply == nullptr ? nullptr : webkit_user_message_get_parameters(reply);
  if (bytes == nullptr || !g_variant_is_of_type(bytes, G_VARIANT_TYPE_BYTESTRING)) {
    return {};
  }
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_variant_get_fixed_array(bytes, &size, 1));
  return size == 0 ? std::string() : std::string(data, size);
}

void tellMissingModule() {
  static const bool isTold = [] {
    logLine("ZAM Ad pages cannot be asked anything: the web process has not loaded " +
            webProcessModulePath());
    return true;
  }();
  static_cast<void>(isTold);
}

void onReply(GObject* webView, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Finish> finish(static_cast<Finish*>(data));
  GError* failure = nullptr;
  const std::unique_ptr<WebKitUserMessage, Unref> reply(
      webkit_web_view_send_message_to_page_finish(WEBKIT_WEB_VIEW(webView), result, &failure));
  const std::unique_ptr<GError, decltype(&g_error_free)> error(failure, g_error_free);
  const bool isUnknown = g_error_matches(error.get(), WEBKIT_USER_MESSAGE_ERROR,
                                         WEBKIT_USER_MESSAGE_UNHANDLED_MESSAGE) != FALSE;
  if (isUnknown) {
    tellMissingModule();
  }
  (*finish)(error == nullptr || isUnknown ? std::optional(bytesOf(reply.get())) : std::nullopt);
}

void send(WebKitWebView* webView, const std::string& script, Finish finish) {
  webkit_web_view_send_message_to_page(
      webView,
      webkit_user_message_new(
          kEvaluateMessage,
          g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, script.data(), script.size(), 1)),
      nullptr, onReply, new Finish(std::move(finish)));
}

}  // namespace

ScriptEvaluation::ScriptEvaluation(std::shared_ptr<MainContextRunLoop> runLoop)
    : runLoop_(std::move(runLoop)) {}

std::string ScriptEvaluation::evaluate(WebKitWebView* webView, const std::string& script) {
  // Asked for its page, a web view without a process would start one with an empty page.
  if (!hasPage_) {
    return {};
  }
  constexpr int kMostLeftAlone = 16;
  const bool isWaitedFor = isPageAnswering();
  if (isWaitedFor) {
    leftAlone_ = 0;
  } else if (leftAlone_ == kMostLeftAlone) {
    return {};
  }
  const auto pending = std::make_shared<Pending>();
  send(webView, script, [pending](const std::optional<std::string>& text) {
    pending->result = text.value_or("");
    pending->isDone = true;
  });
  // A turn in which the host works for longer counts as one that only waits: the host's time is not
  // the script's.
  constexpr int kTurn = 50;  // milliseconds
  MainContextRunLoop::HeldTurns turns(*runLoop_);
  gint64 left = isWaitedFor ? static_cast<gint64>(kScriptTimeLimit * 1e6) : 0;
  while (!pending->isDone && left > 0 && hasPage_) {
    const gint64 start = g_get_monotonic_time();
    turns.take(kTurn);
    left -= std::clamp<gint64>(g_get_monotonic_time() - start, 0, gint64{kTurn} * 1000);
  }
  if (!pending->isDone) {
    outstanding_ = pending;
    ++leftAlone_;
  }
  return pending->result;
}

void ScriptEvaluation::whenPageAnswers(WebKitWebView* webView,
                                       std::function<void(bool isThere)> act) {
  if (!hasPage_) {
    act(false);
    return;
  }
  send(webView, "",
       [act = std::move(act)](const std::optional<std::string>& text) { act(text.has_value()); });
}

}  // namespace qorix::gtk
