#pragma once

// Platform: values and ports.

#include <cstdint>
#include <memory>
#include <string>

#include <qorix/Export.h>
#include <qorix/platform/Geometry.h>
#include <qorix/platform/Object.h>

namespace qorix {

/// Posted by a view that was told to, right after its frame's size has changed; the object is the
/// view, there is no user info.
inline constexpr const char* kViewFrameDidChangeNotification = "NSViewFrameDidChangeNotification";

/// A rectangle of a window that can hold other views. Main thread only. One native view has one
/// View, so that identity can be tested by address. The native view may be destroyed by its owner
/// at any moment; calls on the View after that, or meanwhile, have no effect and return
/// zeros.
class QORIX_EXPORT View : public Object {
 public:
  /// Position in the superview's coordinates (origin at its lower left corner, y upwards) and size.
  virtual Rect frame() const = 0;

  /// Places the view in its superview; nothing is clamped, and the superview clips what lies
  /// outside of it. Sizes of 0 and below show nothing; a platform may show sizes that its pictures
  /// cannot hold cut off. A view without superview only keeps the frame.
  virtual void setFrame(const Rect& frame) = 0;

  /// The view that holds this one, or null.
  virtual std::shared_ptr<View> superview() const = 0;

  /// Makes `view` the topmost child of this view, taking it from where it was. The caller still
  /// owns it; this view keeps it alive while it holds it.
  virtual void addSubview(const std::shared_ptr<View>& view) = 0;

  /// Takes the view out of its superview, if there is one.
  virtual void removeFromSuperview() = 0;

  /// Whether changes of the frame's size are posted to the installed notification center as
  /// kViewFrameDidChangeNotification; off at first.
  virtual void setPostsFrameChangedNotifications(bool posts) = 0;

  /// What assistive technology, such as a screen reader, calls the advertisement that this view
  /// holds, UTF-8. The library calls it on the main thread, with the title or with an empty text if
  /// there is none. If the text is empty, or this is never called, the advertisement is called
  /// "Advertisement". Does nothing on a platform that has no such technology.
  virtual void setAccessibleName(const std::string& /*name*/) {}

  /// Whether the native view has been destroyed, or is being destroyed: nothing can be shown in it
  /// any more. Never again false.
  virtual bool isGone() const { return false; }

  /// A number by which a kind of view can be found in a hierarchy; -1 unless a subclass says more.
  virtual std::int64_t tag() const { return -1; }
};

}  // namespace qorix
