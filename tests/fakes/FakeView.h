#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qorix/MyPushAdBoxView.h>
#include <qorix/platform/Platform.h>
#include <qorix/platform/View.h>
#include <qorix/platform/WebView.h>

namespace qorix {

/// The half of a view that a platform provides, without a display. Mixed into each kind of view.
class FakeViewNode {
 public:
  virtual ~FakeViewNode() = default;
  std::weak_ptr<View> parent;
  std::vector<std::shared_ptr<View>> children;
};

template <class ViewClass>
class FakeViewOf : public ViewClass,
                   public FakeViewNode,
                   public std::enable_shared_from_this<FakeViewOf<ViewClass>> {
 public:
  Rect frame() const override { return frame_; }

  void setFrame(const Rect& frame) override {
    ++setFrameCalls;
    const bool isResized = frame.size != frame_.size;
    frame_ = frame;
    if (isResized && postsFrameChanges_) {
      platform().notificationCenter->post(
          Notification(kViewFrameDidChangeNotification, this->shared_from_this()));
    }
  }

  std::shared_ptr<View> superview() const override { return parent.lock(); }

  void addSubview(const std::shared_ptr<View>& view) override {
    view->removeFromSuperview();
    children.push_back(view);
    dynamic_cast<FakeViewNode&>(*view).parent = this->shared_from_this();
  }

  void removeFromSuperview() override {
    const auto superview = parent.lock();
    if (superview == nullptr) {
      return;
    }
    parent.reset();
    const auto self = this->shared_from_this();
    std::erase(dynamic_cast<FakeViewNode&>(*superview).children, std::shared_ptr<View>(self));
  }

  void setPostsFrameChangedNotifications(bool posts) override { postsFrameChanges_ = posts; }

  void setAccessibleName(const std::string& name) override { accessibleName = name; }

  bool isGone() const override { return gone; }

  bool postsFrameChanges() const { return postsFrameChanges_; }

  int setFrameCalls = 0;
  std::string accessibleName;
  /// Set when the host has destroyed the native view.
  bool gone = false;

 private:
  Rect frame_;
  bool postsFrameChanges_ = false;
};

using FakeView = FakeViewOf<View>;
using FakeBoxView = FakeViewOf<MyPushAdBoxView>;

/// A web view whose page is scripted by the test.
class FakeWebView : public FakeViewOf<WebView> {
 public:
  struct Load {
    std::string html;
    Url baseUrl;
  };

  void loadHtmlString(const std::string& html, const Url& baseUrl) override {
    loads.push_back({html, baseUrl});
  }

  void endPage() override { ++endedPages; }

  std::string stringByEvaluatingJavaScriptFromString(const std::string& script) override {
    scripts.push_back(script);
    return page ? page(script) : std::string();
  }

  bool isPageAnswering() const override { return isAnswering; }

  void performWhenPageAnswers(std::function<void()> task) override {
    whenAnswering.push_back(std::move(task));
  }

  void setDrawsBackground(bool draws) override { drawsBackground = draws; }

  /// The page responds again: runs what has waited for that.
  void answerAgain() {
    isAnswering = true;
    for (const auto& task : std::exchange(whenAnswering, {})) {
      task();
    }
  }

  /// Evaluates a script as the page would.
  std::function<std::string(const std::string&)> page;
  bool isAnswering = true;
  std::vector<std::function<void()>> whenAnswering;
  std::vector<Load> loads;
  std::vector<std::string> scripts;
  bool drawsBackground = true;
  int endedPages = 0;
};

}  // namespace qorix
