// A host may call whatever it likes while a view or a window of it is being destroyed.

#include <array>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "platform/gtk/GtkTest.h"
#include "platform/gtk/ToplevelWindow.h"
#include "platform/gtk/WidgetView.h"

namespace qorix::test {

namespace {

using PlainView = gtk::WidgetView<View>;

std::shared_ptr<PlainView> makeView() {
  return gtk::makeNativeView<PlainView>(gtk_overlay_new(), gtk::Ownership::viewOwnsWidget);
}

/// What is told of a widget's end.
constexpr std::array kSignals = {
    "destroy",       "unrealize",         "unmap",         "hide",         "parent-set",
    "size-allocate", "hierarchy-changed", "destroy-event", "delete-event", "unmap-event"};

/// Calls a function from every signal of a widget's end.
class Listener {
 public:
  explicit Listener(std::function<void()> act) : state_(std::make_shared<State>(std::move(act))) {}

  void listenTo(GtkWidget* widget) {
    for (const char* signal : kSignals) {
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
  /// Kept by the widgets, too, which may go later.
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

/// A banner in a host's view.
struct Banner {
  std::shared_ptr<View> host;
  std::shared_ptr<PlainView> ad;
  std::shared_ptr<PlainView> other;
};

struct ViewEntry {
  const char* name;
  void (*call)(const Banner& banner);
};

constexpr std::array kViewEntries = {
    ViewEntry{"frame",
              [](const Banner& each) {
                each.host->frame();
                each.ad->frame();
              }},
    ViewEntry{"setFrame",
              [](const Banner& each) {
                each.host->setFrame({{1, 2}, {30, 40}});
                const Size size = each.ad->frame().size;
                each.ad->setFrame({{5, 6}, {size.width + 1, 70}});
              }},
    ViewEntry{"superview",
              [](const Banner& each) {
                each.host->superview();
                each.ad->superview();
              }},
    ViewEntry{"addSubview", [](const Banner& each) { each.host->addSubview(each.other); }},
    ViewEntry{"addSubview of the banner",
              [](const Banner& each) { each.host->addSubview(each.ad); }},
    ViewEntry{"addSubview elsewhere", [](const Banner& each) { each.other->addSubview(each.ad); }},
    ViewEntry{"removeFromSuperview",
              [](const Banner& each) {
                each.ad->removeFromSuperview();
                each.host->removeFromSuperview();
              }},
    ViewEntry{"setPostsFrameChangedNotifications",
              [](const Banner& each) {
                each.host->setPostsFrameChangedNotifications(true);
                each.ad->setPostsFrameChangedNotifications(true);
              }},
    ViewEntry{"tag",
              [](const Banner& each) {
                each.host->tag();
                each.ad->tag();
              }},
    ViewEntry{"isGone",
              [](const Banner& each) {
                each.host->isGone();
                each.ad->isGone();
              }},
};

struct Ending {
  const char* name;
  void (*end)(HostWindow& host, const Banner& banner);
};

constexpr std::array kEndings = {
    Ending{"overlay",
           [](HostWindow& host, const Banner&) { gtk_widget_destroy(GTK_WIDGET(host.overlay())); }},
    Ending{"window", [](HostWindow& host, const Banner&) { host.destroy(); }},
    Ending{"banner",
           [](HostWindow&, const Banner& banner) { gtk_widget_destroy(banner.ad->widget()); }},
    Ending{"removal", [](HostWindow&, const Banner& banner) { banner.ad->removeFromSuperview(); }},
    Ending{"close", [](HostWindow& host, const Banner&) { gtk_window_close(host.window()); }},
};

bool isMapped(GtkWidget* widget) { return gtk_widget_get_mapped(widget) != FALSE; }

void PrintTo(const Ending& ending, std::ostream* stream) { *stream << ending.name; }

/// Also with the host's handlers in force before the library's own.
class ViewDestruction : public GtkTest,
                        public testing::WithParamInterface<std::tuple<Ending, bool>> {
 protected:
  void expectToBear(const ViewEntry& entry) {
    const auto& [ending, isHostFirst] = GetParam();
    HostWindow host(200, 100);
    Banner banner;
    Listener listener([&] { entry.call(banner); });
    const auto listen = [&] {
      listener.listenTo(GTK_WIDGET(host.window()));
      listener.listenTo(gtk_widget_get_parent(GTK_WIDGET(host.overlay())));
      listener.listenTo(GTK_WIDGET(host.overlay()));
    };
    if (isHostFirst) {
      listen();
    }
    banner = {host.view(), makeView(), makeView()};
    if (!isHostFirst) {
      listen();
    }
    listener.listenTo(banner.ad->widget());
    gtk_widget_show(banner.ad->widget());
    gtk_widget_show(banner.other->widget());
    banner.host->addSubview(banner.ad);
    banner.ad->setFrame({{10, 10}, {50, 50}});
    gtk_widget_show_all(GTK_WIDGET(host.window()));
    ASSERT_TRUE(waitFor([&] { return isMapped(banner.ad->widget()); }));
    listener.setOn(true);
    ending.end(host, banner);
    EXPECT_TRUE(waitFor([&] { return listener.calls() > 0; }));
    serveLoop();
    listener.setOn(false);
    host.destroy();
    serveLoop();
    EXPECT_TRUE(banner.host->isGone());
    EXPECT_EQ(banner.host->frame(), Rect{});
  }
};

struct WindowEntry {
  const char* name;
  void (*call)(Window& window);
};

constexpr std::array kWindowEntries = {
    WindowEntry{"contentView", [](Window& each) { EXPECT_NE(each.contentView(), nullptr); }},
    WindowEntry{"frame", [](Window& each) { each.frame(); }},
    WindowEntry{"setFrame",
                [](Window& each) {
                  const Rect frame = each.frame();
                  each.setFrame({{50, 60}, {frame.size.width + 1, 200}});
                }},
    WindowEntry{"frameRectForContentRect",
                [](Window& each) {
                  each.frameRectForContentRect({{1, 2}, {3, 4}});
                }},
    WindowEntry{"contentRectForFrameRect",
                [](Window& each) {
                  each.contentRectForFrameRect({{1, 2}, {30, 40}});
                }},
    WindowEntry{"screen", [](Window& each) { each.screen(); }},
    WindowEntry{"center", [](Window& each) { each.center(); }},
    WindowEntry{"isVisible", [](Window& each) { each.isVisible(); }},
    WindowEntry{"makeKeyAndOrderFront", [](Window& each) { each.makeKeyAndOrderFront(); }},
    WindowEntry{"close", [](Window& each) { each.close(); }},
    WindowEntry{"setLevel", [](Window& each) { each.setLevel(WindowLevel::floating); }},
    WindowEntry{"setTitle", [](Window& each) { each.setTitle("Another"); }},
};

class WindowDestruction : public GtkTest, public testing::WithParamInterface<WindowEntry> {};

void PrintTo(const WindowEntry& entry, std::ostream* stream) { *stream << entry.name; }

GtkWidget* nativeOf(const View& content) {
  return gtk_widget_get_toplevel(dynamic_cast<const PlainView&>(content).widget());
}

}  // namespace

TEST_P(ViewDestruction, bearsEachEntryFromEverySignal) {
  for (const ViewEntry& entry : kViewEntries) {
    SCOPED_TRACE(entry.name);
    expectToBear(entry);
  }
}

INSTANTIATE_TEST_SUITE_P(, ViewDestruction,
                         testing::Combine(testing::ValuesIn(kEndings),
                                          testing::Values(false, true)),
                         [](const auto& instance) {
                           return std::string(std::get<0>(instance.param).name) +
                                  (std::get<1>(instance.param) ? "HostFirst" : "HostLast");
                         });

TEST_P(WindowDestruction, bearsTheEntryFromEverySignalAndCanBeShownAgain) {
  for (const bool isDestroyed : {false, true}) {
    const auto content = makeView();
    content->setFrame({{0, 0}, {300, 200}});
    gtk_widget_show(content->widget());
    const auto window = gtk::ToplevelWindowFactory().createWindowWithContentView(content);
    Listener listener([&] { GetParam().call(*window); });
    window->makeKeyAndOrderFront();
    ASSERT_TRUE(waitFor([&] { return isMapped(content->widget()); }));
    GtkWidget* native = nativeOf(*content);
    listener.listenTo(native);
    listener.listenTo(content->widget());
    listener.setOn(true);
    if (isDestroyed) {
      gtk_widget_destroy(native);
    } else {
      gtk_window_close(GTK_WINDOW(native));
    }
    EXPECT_TRUE(waitFor([&] { return listener.calls() > 0; }));
    serveLoop();
    listener.setOn(false);
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(waitFor([&] { return isMapped(content->widget()); }));
    EXPECT_EQ(gtk_widget_get_parent(content->widget()), nativeOf(*content));
  }
}

INSTANTIATE_TEST_SUITE_P(, WindowDestruction, testing::ValuesIn(kWindowEntries),
                         [](const auto& instance) { return std::string(instance.param.name); });

class GtkDestruction : public GtkTest {
 protected:
  // Moves a banner from one host to the other; `act` is called in the middle of it.
  void moveWhile(const std::function<void()>& act) {
    from.view()->addSubview(ad);
    const gulong handler = g_signal_connect_swapped(
        from.overlay(), "remove", G_CALLBACK(+[](const std::function<void()>* each) { (*each)(); }),
        const_cast<std::function<void()>*>(&act));
    target->addSubview(ad);
    g_signal_handler_disconnect(from.overlay(), handler);
  }

  HostWindow from{200, 100};
  HostWindow to{200, 100};
  const std::shared_ptr<View> target = to.view();
  const std::shared_ptr<PlainView> ad = makeView();
};

TEST_F(GtkDestruction, aHostMayDestroyTheBannerThatIsMoved) {
  moveWhile([this] { gtk_widget_destroy(ad->widget()); });
  EXPECT_TRUE(ad->isGone());
  EXPECT_EQ(ad->superview(), nullptr);
}

TEST_F(GtkDestruction, aHostMayDestroyTheViewToWhichABannerIsMoved) {
  moveWhile([this] { to.destroy(); });
  EXPECT_TRUE(target->isGone());
  EXPECT_FALSE(ad->isGone());
  EXPECT_EQ(ad->superview(), nullptr);
}

TEST_F(GtkDestruction, aHostMayTakeTheBannerThatIsMoved) {
  const auto other = makeView();
  moveWhile([&] { other->addSubview(ad); });
  EXPECT_EQ(ad->superview(), other);
}

TEST_F(GtkDestruction, whatAnObserverThrowsPassesNoFrameOfTheToolkit) {
  target->setPostsFrameChangedNotifications(true);
  platform()
      .notificationCenter
      ->addObserver(kViewFrameDidChangeNotification,
                    [](const Notification&) { throw std::runtime_error("of the host"); })
      .keep();
  to.show();
  EXPECT_EQ(target->frame().size, (Size{200, 100}));
  EXPECT_EQ(log->lines().at(0), "ZAM An exception was stopped: of the host");
}

}  // namespace qorix::test
