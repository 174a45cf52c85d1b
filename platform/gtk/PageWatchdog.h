#pragma once

#include <functional>
#include <memory>

using WebKitWebView = struct _WebKitWebView;

namespace qorix::gtk {

/// Notices that the page of one web view does not answer any more, because of a script that does
/// not end, say. Asks it something harmless every few seconds. Time during which the main loop does
/// not run does not count. Main thread only.
class PageWatchdog {
 public:
  /// Seconds that a page may take to answer. Its silence is noticed at most half of that later.
  static constexpr unsigned kTimeLimit = 10;

  /// `onSilence` is called when the page of `webView` is silent; the watch has ended then.
  PageWatchdog(WebKitWebView* webView, std::function<void()> onSilence);
  ~PageWatchdog();
  PageWatchdog(const PageWatchdog&) = delete;
  PageWatchdog& operator=(const PageWatchdog&) = delete;

  /// Begins to watch, unless it does so already.
  void start();
  void stop();

 private:
  struct Question;

  void ask();
  bool isSilent();
  static int onTick(void* self);

  WebKitWebView* const webView_;
  const std::function<void()> onSilence_;
  std::shared_ptr<Question> question_;
  unsigned timer_ = 0;
};

}  // namespace qorix::gtk
