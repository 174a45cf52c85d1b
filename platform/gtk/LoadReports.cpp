#include "platform/gtk/LoadReports.h"

#include <chrono>
#include <string>
#include <utility>

#include <qorix/platform/Log.h>

namespace qorix::gtk {

LoadReports::LoadReports(std::shared_ptr<RunLoop> runLoop, WhenPageAnswers whenPageAnswers,
                         Deliver deliver)
    : runLoop_(std::move(runLoop)),
      whenPageAnswers_(std::move(whenPageAnswers)),
      deliver_(std::move(deliver)) {}

void LoadReports::add(const WebFrame& frame) {
  if (!frame.isMainFrame && waiting_.size() >= kMostWaiting) {
    if (!std::exchange(isOverflowTold_, true)) {
      logLine("ZAM Ad page loads inner frames too fast: more than " + std::to_string(kMostWaiting) +
              " wait, others are left out");
    }
    return;
  }
  waiting_.push_back(frame);
  if (!std::exchange(isUnderWay_, true)) {
    askPage();
  }
}

void LoadReports::askPage() {
  whenPageAnswers_([weak = weak_from_this()](bool isThere) {
    const auto self = weak.lock();
    if (self == nullptr) {
      return;
    }
    if (isThere) {
      self->performLater(0, &LoadReports::deliverFirst);
    } else {
      self->waiting_.clear();
      self->isUnderWay_ = false;
    }
  });
}

void LoadReports::deliverFirst() {
  const WebFrame frame = waiting_.front();
  waiting_.pop_front();
  const auto start = std::chrono::steady_clock::now();
  deliver_(frame);
  const std::chrono::duration<double> work = std::chrono::steady_clock::now() - start;
  performLater(work.count(), &LoadReports::goOn);
}

void LoadReports::goOn() {
  if (waiting_.empty()) {
    isUnderWay_ = false;
  } else {
    askPage();
  }
}

void LoadReports::performLater(double seconds, void (LoadReports::*step)()) {
  runLoop_->performAfterDelay(seconds, [weak = weak_from_this(), step] {
    if (const auto self = weak.lock()) {
      (*self.*step)();
    }
  });
}

}  // namespace qorix::gtk
