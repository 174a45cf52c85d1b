// A host may call whatever it likes while the window of the pop-up is being destroyed.

#include <array>

#include "platform/gtk/ToplevelWindow.h"
#include "support/gtk/GtkTest.h"
#include "support/gtk/WidgetEnd.h"

namespace qorix::test {

namespace {

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

class WindowDestructionTest : public GtkTest, public testing::WithParamInterface<WindowEntry> {};

void PrintTo(const WindowEntry& entry, std::ostream* stream) { *stream << entry.name; }

GtkWidget* nativeOf(const View& content) {
  return gtk_widget_get_toplevel(dynamic_cast<const PlainView&>(content).widget());
}

}  // namespace

TEST_P(WindowDestructionTest, bearsTheEntryFromEverySignalAndCanBeShownAgain) {
  for (const bool isDestroyed : {false, true}) {
    const auto content = makeView();
    content->setFrame({{0, 0}, {300, 200}});
    gtk_widget_show(content->widget());
    const auto window = gtk::ToplevelWindowFactory().createWindowWithContentView(content);
    WidgetEndListener listener([&] { GetParam().call(*window); });
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

INSTANTIATE_TEST_SUITE_P(, WindowDestructionTest, testing::ValuesIn(kWindowEntries),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace qorix::test
