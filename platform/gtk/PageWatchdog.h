#pragma once

#include <functional>
#include <memory>

using WebKitWebView = struct _WebKitWebView;

namespace qorix::gtk {

/// Notices that the page of one web view answers nothing any more, as a script that does not end
/// makes it. Asks it something harmless every few seconds. Time in which the main loop does not run
/// does not count. Main thread only.
class PageWatchdog {
 public:
  /// Seconds that a page may take to answer; it is found out within half of that more.
  static constexpr unsigned kTimeLimit = 10;

  /// `onSilence` is called when the page of `webView` is silent, which ends the watch.
  PageWatchdog(WebKitWebView* webView, std::function<void()> onSilence);
  ~PageWatchdog();
  PageWatchdog(const PageWatchdog&) = delete;
  PageWatchdog& operator=(const PageWatchdog&) = delete;

  /// Watches from now on, when it does not yet.
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
