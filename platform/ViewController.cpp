#include <qorix/platform/Platform.h>
#include <qorix/platform/ViewController.h>

namespace qorix {

namespace {

std::optional<std::string> textIn(const Dictionary& coder, const char* key) {
  const Value* value = find(coder, key);
  const auto* text = value == nullptr ? nullptr : value->as<std::string>();
  return text == nullptr ? std::nullopt : std::optional(*text);
}

}  // namespace

bool ViewController::initWithNibName(const std::optional<std::string>& nibName,
                                     const std::shared_ptr<const Bundle>& bundle) {
  nibName_ = nibName;
  nibBundle_ = bundle;
  return true;
}

bool ViewController::initWithCoder(const Dictionary& coder) {
  nibName_ = textIn(coder, kViewControllerNibNameKey);
  title_ = textIn(coder, kViewControllerTitleKey);
  return true;
}

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
