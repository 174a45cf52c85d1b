#include "platform/gtk/PageWatchdog.h"

#include <algorithm>
#include <utility>

namespace qorix::gtk {

namespace {

// Shorter than the time limit: after a while in which the main loop did not run, an answer that has
// come is handled before the next look.
constexpr int kLookInterval = PageWatchdog::kTimeLimit / 2;

}  // namespace

PageWatchdog::PageWatchdog(std::shared_ptr<RunLoop> runLoop, Ask ask,
                           std::function<void()> onSilence)
    : runLoop_(std::move(runLoop)), ask_(std::move(ask)), onSilence_(std::move(onSilence)) {}

void PageWatchdog::start() {
  pause_ = 0;
  if (state_ != State::waiting) {
    ask();
  }
}

void PageWatchdog::pageIsUsed() {
  if (state_ == State::waiting) {
    pause_ = 0;
  } else if (state_ == State::pausing && pause_ > kShortestPause) {
    pause_ = kShortestPause;
    pause();
  }
}

void PageWatchdog::stop() {
  ++turn_;
  state_ = State::stopped;
}

void PageWatchdog::ask() {
  ++turn_;
  state_ = State::waiting;
  waited_ = 0;
  runLoop_->performAfterDelay(kLookInterval, inThisTurn(&PageWatchdog::checkSilence));
  ask_(inThisTurn(&PageWatchdog::noticeAnswer));
}

void PageWatchdog::noticeAnswer() {
  pause_ = std::clamp(2 * pause_, kShortestPause, kLongestPause);
  pause();
}

void PageWatchdog::pause() {
  ++turn_;
  state_ = State::pausing;
  runLoop_->performAfterDelay(pause_, inThisTurn(&PageWatchdog::ask));
}

void PageWatchdog::checkSilence() {
  waited_ += kLookInterval;
  if (waited_ < kTimeLimit) {
    runLoop_->performAfterDelay(kLookInterval, inThisTurn(&PageWatchdog::checkSilence));
  } else {
    stop();
    onSilence_();
  }
}

std::function<void()> PageWatchdog::inThisTurn(void (PageWatchdog::*step)()) {
  return [weak = weak_from_this(), turn = turn_, step] {
    const auto self = weak.lock();
    if (self != nullptr && self->turn_ == turn) {
      (*self.*step)();
    }
  };
}

}  // namespace qorix::gtk
