#include "platform/ViewController.h"

#include "platform/Platform.h"

namespace qorix {

std::shared_ptr<View> ViewController::view() {
  if (view_ == nullptr) {
    view_ = loadView();
    if (view_ != nullptr) {
      viewDidLoad();
    }
  }
  return view_;
}

void ViewController::setTitle(const std::string& title) {
  title_ = title;
  if (const auto window = window_.lock()) {
    window->setTitle(title);
  }
}

std::shared_ptr<Window> windowWithContentViewController(
    const std::shared_ptr<ViewController>& controller) {
  const auto view = controller->view();
  if (view == nullptr) {
    return nullptr;
  }
  auto window = platform().windows->createWindowWithContentView(view);
  if (window != nullptr) {
    window->setContentOwner(controller);
    controller->window_ = window;
    if (controller->title()) {
      window->setTitle(*controller->title());
    }
  }
  return window;
}

}  // namespace qorix
