#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Object.h"
#include "platform/View.h"
#include "platform/Window.h"

namespace qorix {

/// Owns a view, which it makes when it is first asked for. Main thread only.
class ViewController : public Object {
 public:
  /// The view; made, and announced to `viewDidLoad`, by the first call. Null when it cannot be
  /// made, and then tried again by the next call.
  std::shared_ptr<View> view();

  /// The title for people; nothing until it is set. A window made for the controller shows it.
  const std::optional<std::string>& title() const { return title_; }
  void setTitle(const std::string& title);

 protected:
  /// Makes the view. Called at most once successfully.
  virtual std::shared_ptr<View> loadView() = 0;
  /// The view has just been made.
  virtual void viewDidLoad() {}

 private:
  friend std::shared_ptr<Window> windowWithContentViewController(
      const std::shared_ptr<ViewController>& controller);

  std::shared_ptr<View> view_;
  std::optional<std::string> title_;
  std::weak_ptr<Window> window_;
};

/// A new window around the controller's view that keeps the controller alive and whose title
/// follows the controller's. Null when there is no view or no window can be made.
std::shared_ptr<Window> windowWithContentViewController(
    const std::shared_ptr<ViewController>& controller);

}  // namespace qorix
