#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>

#include <qorix/platform/RunLoop.h>
#include <qorix/platform/WebView.h>

namespace qorix::gtk {

/// Reports the finished loads of one web view's frames to the delegate: one at a time, in their
/// order, from a delayed perform, and each when the page answers. Reports about a page that is gone
/// are dropped. Main thread only.
///
/// A page can load inner frames without end, so each report is followed by a pause as long as its
/// handling took, and if too many wait, further inner frames are left out.
class LoadReports : public std::enable_shared_from_this<LoadReports> {
 public:
  static constexpr std::size_t kMostWaiting = 100;

  /// Calls its argument once: with true when the page answers, with false if it is gone before.
  using WhenPageAnswers = std::function<void(std::function<void(bool isThere)>)>;
  using Deliver = std::function<void(const WebFrame&)>;

  LoadReports(std::shared_ptr<RunLoop> runLoop, WhenPageAnswers whenPageAnswers, Deliver deliver);

  void add(const WebFrame& frame);

 private:
  void askPage();
  void deliverFirst();
  void goOn();
  void performLater(double seconds, void (LoadReports::*step)());

  const std::shared_ptr<RunLoop> runLoop_;
  const WhenPageAnswers whenPageAnswers_;
  const Deliver deliver_;
  std::deque<WebFrame> waiting_;
  bool isUnderWay_ = false;
  bool isOverflowTold_ = false;
};

}  // namespace qorix::gtk
