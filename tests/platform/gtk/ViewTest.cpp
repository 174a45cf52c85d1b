#include <stdexcept>

#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

class ViewTest : public GtkTest {
 protected:
  ViewTest() {
    platform()
        .notificationCenter
        ->addObserver(
            kViewFrameDidChangeNotification,
            [this](const Notification& notification) { posted.push_back(notification.object()); })
        .keep();
  }

  std::vector<std::shared_ptr<Object>> posted;
};

// Whether exactly the banner's rectangle, cut off at the overlay's edges, is red.
bool isRedExactlyAt(const HostWindow& host, const Rect& frame) {
  const GdkRectangle overlay = host.overlayOnScreen();
  const int left = overlay.x + static_cast<int>(frame.origin.x);
  const int bottom = overlay.y + overlay.height - static_cast<int>(frame.origin.y);
  GdkRectangle banner = {left, bottom - static_cast<int>(frame.size.height),
                         static_cast<int>(frame.size.width), static_cast<int>(frame.size.height)};
  GdkRectangle visible = {0, 0, 0, 0};
  gdk_rectangle_intersect(&banner, &overlay, &visible);
  const Picture picture = screenPicture();
  const auto area =
      static_cast<std::size_t>(visible.width) * static_cast<std::size_t>(visible.height);
  const PixelBox expected = {visible.x, visible.y, visible.width, visible.height};
  return picture.countOf(kRed) == area && (area == 0 || picture.boxOf(kRed) == expected);
}

}  // namespace

TEST_F(ViewTest, bannerCoversExactlyItsFrame) {
  HostWindow host(500, 300);
  host.show();
  Page page;
  page.showIn(host, {{200, 250}, {300, 50}});
  page.loadAndWait(kRedPage);
  EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{200, 250}, {300, 50}}); }));
}

TEST_F(ViewTest, bannerIsClippedByTheHostAndNotByItsWindow) {
  HostWindow host(200, 100);
  host.show();
  Page page;
  for (const Rect frame :
       {Rect{{-100, 80}, {300, 50}}, Rect{{150, -20}, {100, 50}}, Rect{{-10, -10}, {400, 400}}}) {
    page.showIn(host, frame);
    page.loadAndWait(kRedPage);
    EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(host, frame); })) << frame.origin.x;

    EXPECT_EQ(page.interface->view->frame(), frame);
  }
}

TEST_F(ViewTest, bannerOutsideOfItsHostTakesNoClicks) {
  HostWindow host(200, 100);
  host.show();
  Page page;
  page.showIn(host, {{-30, 0}, {300, 100}});
  page.loadAndWait(
      "<body style='margin:0;background:#f00' onclick='clicks++'>"
      "<script>var clicks = 0</script></body>");
  ASSERT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{-30, 0}, {300, 100}}); }));
  const GdkRectangle overlay = host.overlayOnScreen();
  const auto click = [](int x, int y) {
    run({"xdotool", "mousemove", std::to_string(x), std::to_string(y), "click", "1"});
  };
  click(overlay.x - 10, overlay.y + 50);
  click(overlay.x + overlay.width + 10, overlay.y + 50);
  click(overlay.x + 10, overlay.y + 50);
  EXPECT_TRUE(waitFor([&] { return page.evaluate("clicks") == "1"; }));
}

TEST_F(ViewTest, hostIsClickableBesideTheBanner) {
  HostWindow host(200, 100);
  int clicks = 0;
  GtkWidget* area = gtk_bin_get_child(GTK_BIN(host.overlay()));
  gtk_widget_add_events(area, GDK_BUTTON_PRESS_MASK);
  g_signal_connect(area, "button-press-event",
                   G_CALLBACK(+[](GtkWidget*, GdkEvent*, gpointer count) -> gboolean {
                     ++*static_cast<int*>(count);
                     return TRUE;
                   }),
                   &clicks);
  host.show();
  Page page;
  page.showIn(host, {{0, 0}, {100, 100}});
  page.loadAndWait(kRedPage);
  ASSERT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{0, 0}, {100, 100}}); }));
  const GdkRectangle overlay = host.overlayOnScreen();
  run({"xdotool", "mousemove", std::to_string(overlay.x + 50), std::to_string(overlay.y + 50),
       "click", "1", "mousemove", std::to_string(overlay.x + 150), std::to_string(overlay.y + 50),
       "click", "1"});
  EXPECT_TRUE(waitFor([&] { return clicks == 1; }));
}

TEST_F(ViewTest, frameFollowsItsHostWithoutALag) {
  HostWindow host(500, 300);
  host.show();
  Page page;
  const auto hostView = host.view();
  const auto banner = page.interface->view;
  hostView->setPostsFrameChangedNotifications(true);
  platform()
      .notificationCenter
      ->addObserver(kViewFrameDidChangeNotification,
                    [&](const Notification&) {
                      const Size size = hostView->frame().size;
                      banner->setFrame({{size.width - 300, size.height - 50}, {300, 50}});
                    })
      .keep();
  page.showIn(host, {{200, 250}, {300, 50}});
  page.loadAndWait(kRedPage);
  ASSERT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{200, 250}, {300, 50}}); }));
  // The allocation that gives the host its new size must also give the banner its new place.
  struct Seen {
    GtkWidget* webView;
    std::vector<std::pair<int, int>> xAndWidth;
  } seen = {nullptr, {}};
  g_signal_connect_after(host.window(), "size-allocate",
                         G_CALLBACK(+[](GtkWidget* window, GdkRectangle*, gpointer data) {
                           auto* places = static_cast<Seen*>(data);
                           int x = 0;
                           int y = 0;
                           gtk_widget_translate_coordinates(places->webView, window, 0, 0, &x, &y);
                           places->xAndWidth.emplace_back(x,
                                                          gtk_widget_get_allocated_width(window));
                         }),
                         &seen);
  GList* children = gtk_container_get_children(GTK_CONTAINER(host.overlay()));
  seen.webView = static_cast<GtkWidget*>(g_list_last(children)->data);
  g_list_free(children);
  host.resizeOverlay(800, 600);
  EXPECT_EQ(banner->frame(), (Rect{{500, 550}, {300, 50}}));
  EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{500, 550}, {300, 50}}); }));
  EXPECT_FALSE(seen.xAndWidth.empty());
  for (const auto& [x, width] : seen.xAndWidth) {
    EXPECT_EQ(x, width - 40 - 300);
  }
  ASSERT_FALSE(posted.empty());
  EXPECT_EQ(posted.back(), hostView);
}

TEST_F(ViewTest, hostThatIsNotToldToPostsNothing) {
  HostWindow host(500, 300);
  const auto hostView = host.view();
  host.show();
  host.resizeOverlay(600, 400);
  EXPECT_TRUE(posted.empty());
  EXPECT_EQ(hostView->frame().size, (Size{600, 400}));
}

TEST_F(ViewTest, hostShownLateTellsItsSizeThen) {
  HostWindow host(500, 300);
  const auto hostView = host.view();
  hostView->setPostsFrameChangedNotifications(true);
  EXPECT_EQ(hostView->frame().size, (Size{0, 0}));
  host.show();
  EXPECT_EQ(hostView->frame().size, (Size{500, 300}));
  EXPECT_FALSE(posted.empty());
}

TEST_F(ViewTest, emptyFrameShowsNothingAndComesBack) {
  HostWindow host(300, 200);
  host.show();
  Page page;
  page.showIn(host, {{10, 10}, {100, 50}});
  page.loadAndWait(kRedPage);
  ASSERT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{10, 10}, {100, 50}}); }));
  for (const Size size : {Size{0, 50}, Size{100, -5}}) {
    page.interface->view->setFrame({{10, 10}, size});
    EXPECT_EQ(page.interface->view->frame().size, size);
    EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{10, 10}, {0, 0}}); }));
  }
  page.interface->view->setFrame({{10, 10}, {100, 50}});
  EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{10, 10}, {100, 50}}); }));
}

TEST_F(ViewTest, reparentedHostKeepsItsBanner) {
  HostWindow host(300, 200);
  HostWindow other(400, 300);
  host.show();
  Page page;
  page.showIn(host, {{10, 10}, {100, 50}});
  page.loadAndWait(kRedPage);
  const auto hostView = host.view();
  hostView->setPostsFrameChangedNotifications(true);
  GtkWidget* overlay = GTK_WIDGET(host.overlay());
  g_object_ref(overlay);
  gtk_container_remove(GTK_CONTAINER(gtk_widget_get_parent(overlay)), overlay);
  gtk_container_remove(GTK_CONTAINER(other.overlay()), gtk_bin_get_child(GTK_BIN(other.overlay())));
  gtk_container_add(GTK_CONTAINER(other.overlay()), overlay);
  g_object_unref(overlay);
  other.show();
  EXPECT_EQ(host.view(), hostView);
  EXPECT_EQ(page.interface->view->superview(), hostView);
  EXPECT_EQ(hostView->frame().size, (Size{400, 300}));
  EXPECT_FALSE(posted.empty());
  EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(other, {{10, 10}, {100, 50}}); }));
}

TEST_F(ViewTest, bannerFollowsAHostThatIsReparentedWhileShown) {
  HostWindow host(400, 300);
  host.show();
  Page page;
  page.showIn(host, {{300, 0}, {100, 60}});
  page.loadAndWait(kRedPage);
  ASSERT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{300, 0}, {100, 60}}); }));
  const auto hostView = host.view();
  const auto banner = page.interface->view;
  hostView->setPostsFrameChangedNotifications(true);
  platform()
      .notificationCenter
      ->addObserver(kViewFrameDidChangeNotification,
                    [&](const Notification&) {
                      banner->setFrame({{hostView->frame().size.width - 100, 0}, {100, 60}});
                    })
      .keep();
  GtkWidget* overlay = GTK_WIDGET(host.overlay());
  GtkWidget* other = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWidget* frame = gtk_frame_new(nullptr);
  gtk_container_set_border_width(GTK_CONTAINER(frame), 60);
  gtk_container_add(GTK_CONTAINER(other), frame);
  g_object_ref(overlay);
  gtk_container_remove(GTK_CONTAINER(gtk_widget_get_parent(overlay)), overlay);
  gtk_container_add(GTK_CONTAINER(frame), overlay);
  g_object_unref(overlay);
  gtk_window_resize(GTK_WINDOW(other), 560, 400);
  gtk_widget_show_all(other);
  ASSERT_TRUE(waitFor([&] { return gtk_window_is_active(GTK_WINDOW(other)) != FALSE; }));
  EXPECT_TRUE(waitFor([&] { return screenPicture().countOf(kRed) == 6000; }));
  gtk_widget_destroy(other);
}

TEST_F(ViewTest, addedViewIsAboveItsSiblings) {
  HostWindow host(300, 200);
  gtk_overlay_add_overlay(host.overlay(), newColoredArea(kBlue));  // the host's own, over all of it
  host.show();
  Page first;
  Page second;
  first.showIn(host, {{10, 10}, {100, 50}});
  first.loadAndWait(kRedPage);
  EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{10, 10}, {100, 50}}); }));
  second.showIn(host, {{10, 10}, {100, 50}});
  second.loadAndWait("<body style='margin:0;background:#ff0'></body>");
  EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(host, {}); })) << "the later one is on top";
  host.view()->addSubview(first.interface->view);
  EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(host, {{10, 10}, {100, 50}}); })) << "raised";
}

TEST_F(ViewTest, pageSeesItsWholeSizeHoweverFarItReachesBeyondTheHost) {
  HostWindow host(200, 100);
  host.show();
  Page page;
  const Rect frame{{-16'300, 20}, {16'384, 50}};
  page.showIn(host, frame);
  page.loadAndWait(kRedPage);
  EXPECT_TRUE(waitFor([&] {
    return page.evaluate("innerWidth + 'x' + innerHeight") == "16384x50";
  })) << page.evaluate("innerWidth + 'x' + innerHeight");
  EXPECT_TRUE(waitFor([&] { return isRedExactlyAt(host, frame); }));
}

TEST_F(ViewTest, rootHasTheSizeOfItsInterfaceFileAndMayBecomeSmaller) {
  HostWindow host(300, 200);
  host.show();
  Page page;
  EXPECT_EQ(page.interface->view->frame(), (Rect{{0, 0}, {480, 320}}));
  page.showIn(host, {{0, 0}, {30, 20}});
  EXPECT_TRUE(waitFor([&] { return page.webView()->frame().size == Size{30, 20}; }));
}

TEST_F(ViewTest, aViewIsGoneWithItsWidget) {
  HostWindow host(300, 200);
  const auto view = host.view();
  EXPECT_FALSE(view->isGone());
  bool wasGone = false;
  std::function<void()> look = [&] { wasGone = view->isGone(); };
  g_signal_connect_swapped(host.overlay(), "destroy",
                           G_CALLBACK(+[](std::function<void()>* act) { (*act)(); }), &look);
  host.destroy();
  EXPECT_TRUE(wasGone);
  EXPECT_TRUE(view->isGone());
}

TEST_F(ViewTest, destroyedHostEndsItsView) {
  auto host = std::make_unique<HostWindow>(300, 200);
  host->show();
  Page page;
  page.showIn(*host, {{10, 10}, {100, 50}});
  const std::weak_ptr<View> weakHost = host->view();
  const auto strongBanner = page.interface->view;
  EXPECT_FALSE(weakHost.expired());
  host.reset();
  EXPECT_TRUE(weakHost.expired());
  EXPECT_TRUE(page.interface->webView.expired());
  EXPECT_EQ(strongBanner->frame(), Rect{});
  EXPECT_EQ(strongBanner->superview(), nullptr);
  strongBanner->setFrame({{1, 2}, {3, 4}});
  strongBanner->removeFromSuperview();
  EXPECT_EQ(strongBanner->frame(), Rect{});
}

TEST_F(ViewTest, superviewKeepsItsSubviewAlive) {
  HostWindow host(300, 200);
  host.show();
  Page page;
  page.showIn(host, {{10, 10}, {100, 50}});
  const std::weak_ptr<View> banner = page.interface->view;
  page.interface->view.reset();
  ASSERT_FALSE(banner.expired());
  banner.lock()->removeFromSuperview();
  EXPECT_TRUE(banner.expired());
  EXPECT_TRUE(page.interface->webView.expired());
}

TEST_F(ViewTest, webViewFillsTheRootWhateverItsPage) {
  HostWindow host(300, 200);
  host.show();
  Page page;
  page.showIn(host, {{0, 0}, {60, 40}});
  page.loadAndWait("<div style='width:2000px;height:3000px'>large</div>");
  EXPECT_TRUE(waitFor([&] { return page.evaluate("innerWidth + 'x' + innerHeight") == "60x40"; }));
  EXPECT_EQ(page.webView()->frame(), (Rect{{0, 0}, {60, 40}}));
  page.interface->view->setFrame({{0, 0}, {120, 90}});
  EXPECT_TRUE(waitFor([&] { return page.evaluate("innerWidth + 'x' + innerHeight") == "120x90"; }));
}

TEST_F(ViewTest, rootIsABoxView) {
  Page page;
  EXPECT_EQ(page.interface->view->tag(), 27921);
  EXPECT_EQ(page.webView()->superview(), page.interface->view);
}

TEST_F(ViewTest, whatAnObserverThrowsPassesNoFrameOfTheToolkit) {
  HostWindow to(200, 100);
  const auto target = to.view();
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
