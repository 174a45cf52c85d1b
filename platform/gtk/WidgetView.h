#pragma once

#include <memory>
#include <string>
#include <utility>

#include <qorix/platform/View.h>

using GtkWidget = struct _GtkWidget;
using GtkOverlay = struct _GtkOverlay;
using cairo_rectangle_int_t = struct _cairo_rectangle_int;

namespace qorix::gtk {

/// Who keeps whom alive, a widget or its View.
enum class Ownership {
  widgetOwnsView,  // the View lives until the widget is destroyed, whoever does that
  viewOwnsWidget,  // the widget is destroyed with the View; a parent widget keeps the View alive
};

/// What all views on widgets have in common. A widget has at most one view.
///
/// A GtkOverlay holds subviews above its main child, each in exactly the frame that it was given;
/// any other widget holds none. The frame of a view that is no subview is up to its container.
class NativeView {
 public:
  NativeView(const NativeView&) = delete;
  NativeView& operator=(const NativeView&) = delete;
  virtual ~NativeView();

  /// The view of `widget`; null if it has none.
  static NativeView* of(GtkWidget* widget);

  /// Null once the widget has been destroyed.
  GtkWidget* widget() const { return widget_; }

  /// This as a View.
  std::shared_ptr<View> self() const { return self_.lock(); }

 protected:
  NativeView(GtkWidget* widget, Ownership ownership);

  /// The widget is being destroyed. After this call the view has none any more.
  virtual void widgetWillBeDestroyed() {}

  const Rect& nativeFrame() const { return frame_; }
  void setNativeFrame(const Rect& frame);
  std::shared_ptr<View> nativeSuperview() const;
  void addNativeSubview(const std::shared_ptr<View>& view);
  void removeFromNativeSuperview();
  void setNativePosts(bool posts) { posts_ = posts; }
  void setNativeAccessibleName(const std::string& name);
  bool isNativeGone() const;

 private:
  template <class ViewType, class... Arguments>
  friend std::shared_ptr<ViewType> makeNativeView(Arguments&&... arguments);

  void setSelf(const std::shared_ptr<View>& self);
  void detach();
  void changeFrame(const Rect& frame);
  void layOutAgain();
  void clipSubviews();
  bool takesPlacedChild(GtkWidget* child) const;
  bool canBeMoved() const;

  static void onDestroy(GtkWidget* widget, void* self);
  static void onParentSet(GtkWidget* widget, GtkWidget* previousParent, void* self);
  static void onSizeAllocate(GtkWidget* widget, cairo_rectangle_int_t* allocation, void* self);
  static int onGetChildPosition(GtkOverlay* overlay, GtkWidget* child,
                                cairo_rectangle_int_t* allocation, void* self);
  static void onRealize(GtkWidget* widget, void* self);

  GtkWidget* widget_;
  const Ownership ownership_;
  std::weak_ptr<View> self_;
  std::shared_ptr<View> kept_;  // itself, as long as its widget or its parent owns it
  Rect frame_;
  bool isPlaced_ = false;  // in a superview that follows frame_
  bool posts_ = false;
  bool isAllocating_ = false;
  bool needsLayout_ = false;  // a subview moved while this was being allocated
};

/// A View of the kind `ViewClass` on a widget. Made by `makeNativeView`.
template <class ViewClass>
class WidgetView : public ViewClass, public NativeView {
 public:
  WidgetView(GtkWidget* widget, Ownership ownership) : NativeView(widget, ownership) {}

  Rect frame() const override { return nativeFrame(); }
  void setFrame(const Rect& frame) override { setNativeFrame(frame); }
  std::shared_ptr<View> superview() const override { return nativeSuperview(); }
  void addSubview(const std::shared_ptr<View>& view) override { addNativeSubview(view); }
  void removeFromSuperview() override { removeFromNativeSuperview(); }
  void setPostsFrameChangedNotifications(bool posts) override { setNativePosts(posts); }
  void setAccessibleName(const std::string& name) override { setNativeAccessibleName(name); }
  bool isGone() const override { return isNativeGone(); }
};

/// A new view of the type `ViewType`, made from `arguments`.
template <class ViewType, class... Arguments>
std::shared_ptr<ViewType> makeNativeView(Arguments&&... arguments) {
  auto view = std::make_shared<ViewType>(std::forward<Arguments>(arguments)...);
  static_cast<NativeView&>(*view).setSelf(view);
  return view;
}

}  // namespace qorix::gtk
