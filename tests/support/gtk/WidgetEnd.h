#pragma once

#include <gtk/gtk.h>

#include <array>
#include <functional>
#include <memory>
#include <utility>

#include <qorix/platform/View.h>

#include "platform/gtk/WidgetView.h"

namespace qorix::test {

using PlainView = gtk::WidgetView<View>;

inline std::shared_ptr<PlainView> makeView() {
  return gtk::makeNativeView<PlainView>(gtk_overlay_new(), gtk::Ownership::viewOwnsWidget);
}

inline bool isMapped(GtkWidget* widget) { return gtk_widget_get_mapped(widget) != FALSE; }

/// The signals of a widget that is being destroyed.
inline constexpr std::array kWidgetEndSignals = {
    "destroy",       "unrealize",         "unmap",         "hide",         "parent-set",
    "size-allocate", "hierarchy-changed", "destroy-event", "delete-event", "unmap-event"};

/// Calls a function from each of these signals.
class WidgetEndListener {
 public:
  explicit WidgetEndListener(std::function<void()> act)
      : state_(std::make_shared<State>(std::move(act))) {}

  void listenTo(GtkWidget* widget) {
    for (const char* signal : kWidgetEndSignals) {
      connect(widget, signal);
    }
    if (GTK_IS_CONTAINER(widget)) {
      connect(widget, "add");
      connect(widget, "remove");
    }
  }

  void setOn(bool isOn) { state_->isOn = isOn; }
  int calls() const { return state_->calls; }

 private:
  /// Kept by the widgets too, which may live longer.
  struct State {
    explicit State(std::function<void()> theAct) : act(std::move(theAct)) {}

    void hear() {
      if (isOn && !isHearing) {  // what is called has signals, too
        isHearing = true;
        ++calls;
        act();
        isHearing = false;
      }
    }

    const std::function<void()> act;
    bool isOn = false;
    bool isHearing = false;
    int calls = 0;
  };
  using SharedState = std::shared_ptr<State>;

  void connect(GtkWidget* widget, const char* signal) {
    GClosure* closure =
        g_cclosure_new(G_CALLBACK(+[] {}), new SharedState(state_),
                       [](gpointer state, GClosure*) { delete static_cast<SharedState*>(state); });
    g_closure_set_marshal(closure,
                          [](GClosure* each, GValue*, guint, const GValue*, gpointer, gpointer) {
                            const SharedState state = *static_cast<SharedState*>(each->data);
                            state->hear();
                          });
    g_signal_connect_closure(widget, signal, closure, FALSE);
  }

  SharedState state_;
};

}  // namespace qorix::test
