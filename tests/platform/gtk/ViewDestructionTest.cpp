// A host may call whatever it likes while one of its views is being destroyed.

#include <array>
#include <tuple>

#include "support/gtk/GtkTest.h"
#include "support/gtk/WidgetEnd.h"

namespace qorix::test {

namespace {

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

void PrintTo(const Ending& ending, std::ostream* stream) { *stream << ending.name; }

/// Also with the host's handlers in force before the library's own.
class ViewDestructionTest : public GtkTest,
                            public testing::WithParamInterface<std::tuple<Ending, bool>> {
 protected:
  void expectToBear(const ViewEntry& entry) {
    const auto& [ending, isHostFirst] = GetParam();
    HostWindow host(200, 100);
    Banner banner;
    WidgetEndListener listener([&] { entry.call(banner); });
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

}  // namespace

TEST_P(ViewDestructionTest, bearsEachEntryFromEverySignal) {
  for (const ViewEntry& entry : kViewEntries) {
    SCOPED_TRACE(entry.name);
    expectToBear(entry);
  }
}

INSTANTIATE_TEST_SUITE_P(, ViewDestructionTest,
                         testing::Combine(testing::ValuesIn(kEndings),
                                          testing::Values(false, true)),
                         [](const auto& instance) {
                           return std::string(std::get<0>(instance.param).name) +
                                  (std::get<1>(instance.param) ? "HostFirst" : "HostLast");
                         });

}  // namespace qorix::test
