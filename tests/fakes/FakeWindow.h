#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qorix/platform/Window.h>

#include "fakes/FakeView.h"

namespace qorix {

class FakeScreen : public Screen {
 public:
  explicit FakeScreen(const Rect& visibleFrame) : visibleFrame_(visibleFrame) {}
  Rect visibleFrame() const override { return visibleFrame_; }

 private:
  Rect visibleFrame_;
};

/// A window without a desktop, with a title bar of 22 points.
class FakeWindow : public Window, public std::enable_shared_from_this<FakeWindow> {
 public:
  static constexpr double kTitleBarHeight = 22;

  FakeWindow(std::shared_ptr<View> contentView, double titleBarHeight, const Rect& contentRect)
      : contentView_(std::move(contentView)),
        titleBarHeight_(titleBarHeight),
        frame_(frameRectForContentRect(contentRect)) {}

  std::shared_ptr<View> contentView() const override { return contentView_; }
  Rect frame() const override { return frame_; }
  void setFrame(const Rect& frame) override {
    frame_ = frame;
    setFrames.push_back(frame);
  }
  Rect frameRectForContentRect(const Rect& contentRect) const override {
    Rect rect = contentRect;
    rect.size.height += titleBarHeight_;
    return rect;
  }
  Rect contentRectForFrameRect(const Rect& frameRect) const override {
    Rect rect = frameRect;
    rect.size.height -= titleBarHeight_;
    return rect;
  }
  std::shared_ptr<Screen> screen() const override { return onScreen; }
  void center() override { ++centerCalls; }
  bool isVisible() const override { return visible; }
  void makeKeyAndOrderFront() override {
    visible = true;
    ++orderFrontCalls;
  }
  void close() override {
    if (visible && !isClosing_) {
      isClosing_ = true;
      platform().notificationCenter->post(
          Notification(kWindowWillCloseNotification, shared_from_this()));
      isClosing_ = false;
      visible = false;
    }
  }
  void setLevel(WindowLevel newLevel) override { level = newLevel; }
  void setTitle(const std::string& newTitle) override { title = newTitle; }

  std::shared_ptr<Screen> onScreen;
  bool visible = false;
  WindowLevel level = WindowLevel::normal;
  std::string title;
  int orderFrontCalls = 0;
  int centerCalls = 0;
  std::vector<Rect> setFrames;

 private:
  bool isClosing_ = false;
  std::shared_ptr<View> contentView_;
  double titleBarHeight_;
  Rect frame_;
};

class FakeWindowFactory : public WindowFactory {
 public:
  std::shared_ptr<Window> createWindowWithContentView(
      const std::shared_ptr<View>& contentView) override {
    return keep(std::make_shared<FakeWindow>(contentView, FakeWindow::kTitleBarHeight,
                                             Rect{{0, 0}, contentView->frame().size}));
  }

  std::shared_ptr<Window> createBorderlessWindow(const Rect& contentRect) override {
    auto content = std::make_shared<FakeView>();
    content->setFrame({{0, 0}, contentRect.size});
    borderlessContentRects.push_back(contentRect);
    return keep(std::make_shared<FakeWindow>(std::move(content), 0, contentRect));
  }

  /// When set, no window can be made.
  bool isBroken = false;
  std::vector<std::shared_ptr<FakeWindow>> windows;
  std::vector<Rect> borderlessContentRects;
  std::shared_ptr<Screen> screen = std::make_shared<FakeScreen>(Rect{{0, 23}, {1440, 877}});

 private:
  std::shared_ptr<Window> keep(const std::shared_ptr<FakeWindow>& window) {
    if (isBroken) {
      return nullptr;
    }
    window->onScreen = screen;
    windows.push_back(window);
    return window;
  }
};

}  // namespace qorix
