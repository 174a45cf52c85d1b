#pragma once

// Platform: values and ports.

#include <memory>
#include <optional>
#include <string>

#include <qorix/Export.h>
#include <qorix/platform/Bundle.h>
#include <qorix/platform/Object.h>
#include <qorix/platform/Value.h>
#include <qorix/platform/View.h>
#include <qorix/platform/Window.h>

namespace qorix {

/// @{
/// What the archive of a controller may hold, both texts: the name of the interface file, the
/// title.
inline constexpr const char* kViewControllerNibNameKey = "NSNibName";
inline constexpr const char* kViewControllerTitleKey = "NSTitle";
/// @}

/// Owns a view, which it makes when it is first asked for. Main thread only.
class QORIX_EXPORT ViewController : public Object {
 public:
  /// @{
  /// Initialise a new controller, once: with the interface file of its view and the bundle that has
  /// it, either of which may be missing, or from its archive. False when the controller cannot be.
  virtual bool initWithNibName(const std::optional<std::string>& nibName,
                               const std::shared_ptr<const Bundle>& bundle);
  virtual bool initWithCoder(const Dictionary& coder);
  /// @}

  /// @{
  /// What the controller was initialised with; absent until then.
  const std::optional<std::string>& nibName() const { return nibName_; }
  const std::shared_ptr<const Bundle>& nibBundle() const { return nibBundle_; }
  /// @}

  /// The view; made, and announced to `viewDidLoad`, by the first call. Null when it cannot be
  /// made, and then tried again by the next call.
  std::shared_ptr<View> view();

  /// @{
  /// The title for people; absent until it is set. A window made for the controller shows it.
  const std::optional<std::string>& title() const { return title_; }
  void setTitle(const std::string& title);
  /// @}

 protected:
  /// Makes the view. Called at most once successfully.
  virtual std::shared_ptr<View> loadView() = 0;
  /// The view has just been made.
  virtual void viewDidLoad() {}

 private:
  friend std::shared_ptr<Window> windowWithContentViewController(
      const std::shared_ptr<ViewController>& controller);

  std::optional<std::string> nibName_;
  std::shared_ptr<const Bundle> nibBundle_;
  std::shared_ptr<View> view_;
  std::optional<std::string> title_;
  std::weak_ptr<Window> window_;
};

/// A new window around the controller's view that keeps the controller alive and whose title
/// follows the controller's. Null when there is no view or no window can be made.
QORIX_EXPORT std::shared_ptr<Window> windowWithContentViewController(
    const std::shared_ptr<ViewController>& controller);

}  // namespace qorix
