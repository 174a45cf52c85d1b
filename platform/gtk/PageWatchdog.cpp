#include "platform/gtk/PageWatchdog.h"

#include <webkit2/webkit2.h>

#include <utility>

#include "platform/Guarded.h"

namespace qorix::gtk {

namespace {

constexpr unsigned kTicks = 2;  // for which a question may wait

}  // namespace

struct PageWatchdog::Question {
  bool isAnswered = false;
  unsigned ticks = 0;
};

PageWatchdog::PageWatchdog(WebKitWebView* webView, std::function<void()> onSilence)
    : webView_(webView), onSilence_(std::move(onSilence)) {}

PageWatchdog::~PageWatchdog() { stop(); }

// The timer has a low priority: an answer that has come is handled before it.
void PageWatchdog::start() {
  if (timer_ == 0) {
    timer_ = g_timeout_add_seconds_full(G_PRIORITY_LOW, kTimeLimit / kTicks,
                                        guarded<onTick, G_SOURCE_CONTINUE>, this, nullptr);
    ask();
  }
}

void PageWatchdog::stop() {
  if (timer_ != 0) {
    g_source_remove(std::exchange(timer_, 0));
  }
}

// Only the page's process knows whether something could be copied, and asking changes nothing.
void PageWatchdog::ask() {
  const auto finish = [](GObject* /*webView*/, GAsyncResult* /*result*/, gpointer data) {
    const std::unique_ptr<std::shared_ptr<Question>> answered(
        static_cast<std::shared_ptr<Question>*>(data));
    (*answered)->isAnswered = true;
  };
  question_ = std::make_shared<Question>();
  webkit_web_view_can_execute_editing_command(webView_, WEBKIT_EDITING_COMMAND_COPY, nullptr,
                                              finish, new std::shared_ptr<Question>(question_));
}

bool PageWatchdog::isSilent() {
  if (question_->isAnswered) {
    ask();
    return false;
  }
  return ++question_->ticks >= kTicks;
}

int PageWatchdog::onTick(void* self) {
  auto* watchdog = static_cast<PageWatchdog*>(self);
  if (!watchdog->isSilent()) {
    return G_SOURCE_CONTINUE;
  }
  watchdog->timer_ = 0;
  const auto onSilence = watchdog->onSilence_;  // the call may destroy the watchdog
  callGuarded(onSilence);
  return G_SOURCE_REMOVE;
}

}  // namespace qorix::gtk
