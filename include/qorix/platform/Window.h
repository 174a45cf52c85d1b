#pragma once

// Platform: values and ports.

#include <memory>
#include <string>
#include <utility>

#include <qorix/Export.h>
#include <qorix/platform/Geometry.h>
#include <qorix/platform/Object.h>
#include <qorix/platform/Screen.h>
#include <qorix/platform/View.h>

namespace qorix {

/// Posted when the user (or `close`) is about to close a window, while it is still visible; the
/// object is the window, there is no user info.
inline constexpr const char* kWindowWillCloseNotification = "NSWindowWillCloseNotification";

/// Where a window lies among the others.
enum class WindowLevel {
  normal,    ///< As the desktop stacks ordinary windows.
  floating,  ///< Stays above ordinary windows.
};

/// A top-level window. Main thread only. Its native window may be destroyed by others at any
/// moment: that closes it, and the next showing makes another one. Frames are in screen
/// coordinates, y upwards from the bottom of the desktop; "frame" is the outer frame with the
/// decorations, "content" what lies inside them.
class QORIX_EXPORT Window : public Object {
 public:
  /// The view that fills the window's content.
  virtual std::shared_ptr<View> contentView() const = 0;

  /// @{
  /// The outer frame. The desktop may give the window another place and size than it was asked for.
  virtual Rect frame() const = 0;
  virtual void setFrame(const Rect& frame) = 0;
  /// @}

  /// @{
  /// The outer frame of a window whose content is at `contentRect`, and the other way round.
  virtual Rect frameRectForContentRect(const Rect& contentRect) const = 0;
  virtual Rect contentRectForFrameRect(const Rect& frameRect) const = 0;
  /// @}

  /// The monitor that most of the window is on, or null when it is on none. A window without any
  /// extent is on the monitor that its place is on.
  virtual std::shared_ptr<Screen> screen() const = 0;

  /// Lets the window centre itself on the desktop as the platform thinks best.
  virtual void center() = 0;

  /// Whether the window is shown; a minimised one is not.
  virtual bool isVisible() const = 0;

  /// Shows the window, also a minimised one, in front of the others and gives it the keyboard where
  /// the desktop allows it.
  virtual void makeKeyAndOrderFront() = 0;

  /// Closes the window as its user would: kWindowWillCloseNotification is posted, then the window
  /// is hidden. It is not destroyed and can be shown again. Nothing happens when it is neither
  /// visible nor minimised.
  virtual void close() = 0;

  /// Keeps the window at that level from now on; a new window's level is `normal`.
  virtual void setLevel(WindowLevel level) = 0;

  /// The title in the window's decorations, UTF-8.
  virtual void setTitle(const std::string& title) = 0;

  /// Keeps the owner of the content view alive as long as the window.
  void setContentOwner(std::shared_ptr<Object> owner) { contentOwner_ = std::move(owner); }

 private:
  std::shared_ptr<Object> contentOwner_;
};

/// Makes windows. Main thread only.
class QORIX_EXPORT WindowFactory {
 public:
  virtual ~WindowFactory() = default;

  /// An ordinary titled, closable and resizable window around `contentView`, as large as that
  /// view's frame, not shown yet. Null when no window can be made.
  virtual std::shared_ptr<Window> createWindowWithContentView(
      const std::shared_ptr<View>& contentView) = 0;

  /// A borderless window with an empty content view that has the size of `contentRect`; it is made
  /// to stay hidden. Null when no window can be made.
  virtual std::shared_ptr<Window> createBorderlessWindow(const Rect& contentRect) = 0;
};

}  // namespace qorix
