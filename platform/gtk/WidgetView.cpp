#include "platform/gtk/WidgetView.h"

#include <gtk/gtk.h>

#include <qorix/platform/Platform.h>

#include "platform/Guarded.h"
#include "platform/gtk/Accessibility.h"
#include "platform/gtk/ClientDecorations.h"
#include "platform/gtk/Coordinates.h"
#include "platform/gtk/HostFocus.h"

namespace qorix::gtk {

namespace {

GQuark nativeViewQuark() {
  static const GQuark quark = g_quark_from_static_string("qorix-native-view");
  return quark;
}

bool hasBeenAllocated(const GtkAllocation& allocation) {
  return allocation.x != -1 || allocation.y != -1 || allocation.width != 1 ||
         allocation.height != 1;
}

// Where its container put the widget, in the container's coordinates.
Rect allocatedFrame(GtkWidget* widget) {
  GtkAllocation allocation;
  gtk_widget_get_allocation(widget, &allocation);
  if (!hasBeenAllocated(allocation)) {
    return {};
  }
  GtkWidget* parent = gtk_widget_get_parent(widget);
  if (parent == nullptr ||
      (GTK_IS_WINDOW(parent) && clientDecorationsOf(GTK_WINDOW(parent)))) {  // it is all content
    return {{}, {static_cast<double>(allocation.width), static_cast<double>(allocation.height)}};
  }
  GtkAllocation parentAllocation;
  gtk_widget_get_allocation(parent, &parentAllocation);
  if (!gtk_widget_get_has_window(parent)) {
    allocation.x -= parentAllocation.x;
    allocation.y -= parentAllocation.y;
  }
  return flipped(allocation, parentAllocation.height);
}

}  // namespace

NativeView* NativeView::of(GtkWidget* widget) {
  return widget == nullptr
             ? nullptr
             : static_cast<NativeView*>(g_object_get_qdata(G_OBJECT(widget), nativeViewQuark()));
}

NativeView::NativeView(GtkWidget* widget, Ownership ownership)
    : widget_(widget), ownership_(ownership), frame_(allocatedFrame(widget)) {
  if (ownership_ == Ownership::viewOwnsWidget) {
    g_object_ref_sink(widget_);
  }
  g_object_set_qdata(G_OBJECT(widget_), nativeViewQuark(), this);
  g_signal_connect(widget_, "destroy", G_CALLBACK(guarded<onDestroy>), this);
  g_signal_connect(widget_, "parent-set", G_CALLBACK(guarded<onParentSet>), this);
  g_signal_connect(widget_, "size-allocate", G_CALLBACK(guarded<onSizeAllocate>), this);
  if (GTK_IS_OVERLAY(widget_)) {
    g_signal_connect(widget_, "get-child-position", G_CALLBACK(guarded<onGetChildPosition>), this);
    g_signal_connect(widget_, "realize", G_CALLBACK(guarded<onRealize>), this);
  }
}

NativeView::~NativeView() {
  if (widget_ == nullptr) {
    return;
  }
  GtkWidget* widget = GTK_WIDGET(g_object_ref(widget_));
  const bool owned = ownership_ == Ownership::viewOwnsWidget;
  detach();
  if (owned) {
    gtk_widget_destroy(widget);
  }
  g_object_unref(widget);
}

void NativeView::setSelf(const std::shared_ptr<View>& self) {
  self_ = self;
  if (ownership_ == Ownership::widgetOwnsView || gtk_widget_get_parent(widget_) != nullptr) {
    kept_ = self;
  }
}

void NativeView::detach() {
  g_signal_handlers_disconnect_by_data(widget_, this);
  g_object_set_qdata(G_OBJECT(widget_), nativeViewQuark(), nullptr);
  GtkWidget* widget = std::exchange(widget_, nullptr);
  frame_ = {};
  isPlaced_ = false;
  if (ownership_ == Ownership::viewOwnsWidget) {
    g_object_unref(widget);
  }
}

void NativeView::setNativeFrame(const Rect& frame) {
  if (widget_ == nullptr) {
    return;
  }
  GtkWidget* parent = gtk_widget_get_parent(widget_);
  if (!isPlaced_ && parent != nullptr) {
    return;
  }
  NativeView* superview = of(parent);  // null if it is gone already
  if (superview != nullptr && frame != frame_) {
    superview->layOutAgain();
  }
  changeFrame(frame);
}

void NativeView::changeFrame(const Rect& frame) {
  const bool hasNewSize = frame.size != frame_.size;
  frame_ = frame;
  if (hasNewSize && posts_) {
    platform().notificationCenter->post(Notification(kViewFrameDidChangeNotification, self()));
  }
}

void NativeView::layOutAgain() {
  if (isAllocating_) {
    needsLayout_ = true;  // a request would be lost at this point
  } else {
    gtk_widget_queue_resize(widget_);
  }
}

std::shared_ptr<View> NativeView::nativeSuperview() const {
  NativeView* parent = widget_ == nullptr ? nullptr : of(gtk_widget_get_parent(widget_));
  return parent == nullptr ? nullptr : parent->self();
}

// Moving a view notifies others, who may destroy or move it or this one.
void NativeView::addNativeSubview(const std::shared_ptr<View>& view) {
  const auto held = self();
  auto* child = dynamic_cast<NativeView*>(view.get());
  const auto heldChild = child == nullptr ? nullptr : child->self();
  if (isNativeGone() || !GTK_IS_OVERLAY(widget_) || child == nullptr || !child->canBeMoved() ||
      gtk_widget_is_ancestor(widget_, child->widget_) != FALSE || widget_ == child->widget_) {
    return;
  }
  GtkWidget* parent = gtk_widget_get_parent(child->widget_);
  if (parent == widget_ && child->isPlaced_) {
    gtk_overlay_reorder_overlay(GTK_OVERLAY(widget_), child->widget_, -1);
    return;
  }
  auto* childWidget = static_cast<GtkWidget*>(g_object_ref(child->widget_));
  const Rect frame = child->frame_;
  if (parent != nullptr) {
    gtk_container_remove(GTK_CONTAINER(parent), childWidget);
  }
  if (!isNativeGone() && !child->isNativeGone() && gtk_widget_get_parent(childWidget) == nullptr) {
    child->frame_ = frame;
    child->isPlaced_ = true;
    gtk_overlay_add_overlay(GTK_OVERLAY(widget_), childWidget);
  }
  g_object_unref(childWidget);
}

void NativeView::removeFromNativeSuperview() {
  const auto superview = nativeSuperview();
  if (superview != nullptr && canBeMoved()) {
    const auto held = self();
    const FocusReturn focus(widget_);
    gtk_container_remove(GTK_CONTAINER(gtk_widget_get_parent(widget_)), widget_);
  }
}

void NativeView::setNativeAccessibleName(const std::string& name) {
  if (widget_ != nullptr) {
    describeHolder(widget_, name);
  }
}

bool NativeView::isNativeGone() const {
  return widget_ == nullptr || gtk_widget_in_destruction(widget_) != FALSE;
}

// A visible widget that is not mapped although its parent is, is just leaving it (or coming). If it
// were moved now, it would leave twice.
bool NativeView::canBeMoved() const {
  if (isNativeGone()) {
    return false;
  }
  GtkWidget* parent = gtk_widget_get_parent(widget_);
  return parent == nullptr || gtk_widget_get_mapped(parent) == FALSE ||
         gtk_widget_get_visible(widget_) == FALSE ||
         gtk_widget_get_child_visible(widget_) == FALSE || gtk_widget_get_mapped(widget_) != FALSE;
}

void NativeView::onDestroy(GtkWidget* /*widget*/, void* data) {
  auto* native = static_cast<NativeView*>(data);
  const auto held = native->self();
  native->kept_.reset();
  native->widgetWillBeDestroyed();
  native->detach();
}

void NativeView::onParentSet(GtkWidget* widget, GtkWidget* /*previousParent*/, void* data) {
  auto* native = static_cast<NativeView*>(data);
  const auto held = native->self();
  const bool hasParent = gtk_widget_get_parent(widget) != nullptr;
  if (!hasParent) {
    native->isPlaced_ = false;
  }
  if (native->ownership_ == Ownership::viewOwnsWidget) {
    native->kept_ = hasParent ? held : nullptr;
  }
}

// Runs after the widget and its children have been allocated, before anything is drawn. Observers
// of the new size may move the subviews, which are then allocated once more, at once.
void NativeView::onSizeAllocate(GtkWidget* widget, GtkAllocation* allocation, void* data) {
  auto* native = static_cast<NativeView*>(data);
  const auto held = native->self();
  if (!native->isPlaced_ && hasBeenAllocated(*allocation)) {
    native->isAllocating_ = true;
    native->changeFrame(allocatedFrame(widget));
    native->isAllocating_ = false;
  }
  if (native->widget_ == nullptr) {
    return;
  }
  if (std::exchange(native->needsLayout_, false)) {
    GtkAllocation same = *allocation;
    gtk_widget_queue_resize(widget);
    gtk_widget_get_preferred_size(widget, nullptr, nullptr);
    gtk_widget_size_allocate(widget, &same);
  }
  native->clipSubviews();
}

bool NativeView::takesPlacedChild(GtkWidget* child) const {
  const NativeView* native = of(child);
  return native != nullptr && native->isPlaced_ && gtk_widget_get_parent(child) == widget_;
}

// An empty view lies just outside the overlay, one unit large.
gboolean NativeView::onGetChildPosition(GtkOverlay* overlay, GtkWidget* child,
                                        GdkRectangle* allocation, void* data) {
  if (!static_cast<NativeView*>(data)->takesPlacedChild(child)) {
    return FALSE;
  }
  gtk_widget_get_preferred_size(child, nullptr, nullptr);  // GTK expects this before an allocation
  const GdkRectangle place =
      flipped(of(child)->frame_, gtk_widget_get_allocated_height(GTK_WIDGET(overlay)));
  *allocation = place.width > 0 && place.height > 0 ? place : GdkRectangle{-1, -1, 1, 1};
  return TRUE;
}

void NativeView::onRealize(GtkWidget* /*widget*/, void* data) {
  static_cast<NativeView*>(data)->clipSubviews();
}

// The part of a subview outside the overlay is not drawn, but would take the pointer: an overlay
// has no window of its own that clips those of its children.
void NativeView::clipSubviews() {
  if (!GTK_IS_OVERLAY(widget_)) {
    return;
  }
  GList* children = gtk_container_get_children(GTK_CONTAINER(widget_));
  for (GList* each = children; each != nullptr; each = each->next) {
    auto* child = static_cast<GtkWidget*>(each->data);
    GdkWindow* window = takesPlacedChild(child) ? gtk_widget_get_parent_window(child) : nullptr;
    if (window == nullptr || window == gtk_widget_get_window(widget_)) {
      continue;
    }
    GtkAllocation area;
    gtk_widget_get_allocation(widget_, &area);
    GdkRectangle own;
    gdk_window_get_geometry(window, &own.x, &own.y, &own.width, &own.height);
    GdkRectangle visible = {0, 0, 0, 0};
    gdk_rectangle_intersect(&area, &own, &visible);
    visible.x -= own.x;
    visible.y -= own.y;
    cairo_region_t* region = cairo_region_create_rectangle(&visible);
    gdk_window_input_shape_combine_region(window, region, 0, 0);
    cairo_region_destroy(region);
  }
  g_list_free(children);
}

}  // namespace qorix::gtk
