#pragma once

#include <functional>
#include <memory>

#include <qorix/platform/RunLoop.h>

namespace qorix::gtk {

/// Notices that the page of one web view does not answer any more, because of a script that does
/// not end, say. Asks it something harmless now and then: soon after it was loaded and while it is
/// used, ever less often while nobody needs it, so that a page at rest costs next to nothing. Time
/// during which the main loop does not run does not count. Main thread only.
class PageWatchdog : public std::enable_shared_from_this<PageWatchdog> {
 public:
  /// Seconds that a page may take to answer.
  static constexpr int kTimeLimit = 10;
  /// Seconds between an answer and the next question, for a page that is used, and at most.
  static constexpr int kShortestPause = 5;
  static constexpr int kLongestPause = 60;

  /// Asks the page, and calls its argument when the page answers.
  using Ask = std::function<void(std::function<void()> onAnswer)>;

  /// `onSilence` is called when the page is silent; the watch has ended then.
  PageWatchdog(std::shared_ptr<RunLoop> runLoop, Ask ask, std::function<void()> onSilence);

  /// Begins to watch a page that has just been loaded.
  void start();
  /// To be called when the page is used: it is asked soon, however long it has been left alone.
  void pageIsUsed();
  /// To be called when the page is gone.
  void stop();

 private:
  enum class State { stopped, waiting, pausing };

  void ask();
  void noticeAnswer();
  void pause();
  void checkSilence();
  std::function<void()> inThisTurn(void (PageWatchdog::*step)());

  const std::shared_ptr<RunLoop> runLoop_;
  const Ask ask_;
  const std::function<void()> onSilence_;
  State state_ = State::stopped;
  int turn_ = 0;  // counts questions and pauses: what belongs to an earlier one does nothing
  int pause_ = 0;
  int waited_ = 0;  // seconds, for an answer
};

}  // namespace qorix::gtk
