// Where the real presenter puts real advertisements on a real screen, pixel for pixel.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdOperator.h>

#include "platform/gtk/WidgetView.h"
#include "presentation/AdFrameLayout.h"
#include "support/Records.h"
#include "support/gtk/GtkTest.h"
#include "support/gtk/StoppedWindowManager.h"

namespace qorix::test {

namespace {

using ::testing::ElementsAre;

std::string describe(const GdkRectangle& box) {
  return "(" + std::to_string(box.x) + ", " + std::to_string(box.y) + ", " +
         std::to_string(box.width) + ", " + std::to_string(box.height) + ")";
}

class PlacementTest : public GtkTest {
 protected:
  PlacementTest() {
    for (const char* name : {kPushAdWillShowNotification, kPushAdDidCloseNotification}) {
      platform()
          .notificationCenter
          ->addObserver(name, [this](const Notification& each) { events.push_back(each.name()); })
          .keep();
    }
  }

  static std::shared_ptr<MyPushAdInfo> redRecord(RecordOf values) {
    values.version = "";  // due every time
    auto record = makeRecord(values);
    record->setHtmlContentsDict(
        LocalizedTexts{{"default", "<!DOCTYPE html><body style='margin:0;background:#f00'>"}});
    record->setTitleDict(LocalizedTexts{{"default", "Pop-up"}});
    return record;
  }

  /// Lets a presenter, which is kept as the manager keeps them, decide and show.
  std::shared_ptr<MyPushAdOperator> present(const std::shared_ptr<View>& hostView,
                                            const std::shared_ptr<MyPushAdInfo>& record) {
    presenters.push_back(MyPushAdOperator::createInstanceWithHostView(hostView));
    presenters.back()->processShowAdIfNeededWithPushAdInfo(record);
    return presenters.back();
  }

  /// Waits until exactly that rectangle of the screen (y downwards) is red.
  static void expectRed(const GdkRectangle& expected, const std::string& what) {
    GdkRectangle seen{};
    EXPECT_TRUE(waitFor([&] {
      serveLoop();  // a picture costs more than what there is to do
      seen = placeOf(kRed);
      return gdk_rectangle_equal(&seen, &expected) != FALSE;
    })) << what
        << ": expected " << describe(expected) << ", seen " << describe(seen);
  }

  /// The part of a frame in the overlay (y upwards) that the overlay does not clip, on the screen.
  static GdkRectangle visiblePart(const Rect& frame, const GdkRectangle& overlay) {
    const GdkRectangle unclipped{
        overlay.x + static_cast<int>(frame.origin.x),
        overlay.y + overlay.height - static_cast<int>(frame.origin.y + frame.size.height),
        static_cast<int>(frame.size.width), static_cast<int>(frame.size.height)};
    GdkRectangle visible{};
    gdk_rectangle_intersect(&unclipped, &overlay, &visible);
    return visible;
  }

  void expectBanner(const HostWindow& host, const RecordOf& values, const std::string& what) {
    const GdkRectangle overlay = host.overlayOnScreen();
    const BannerPlacement placement{
        values.embed,
        {static_cast<double>(values.width), static_cast<double>(values.height)},
        static_cast<double>(values.offsetx),
        static_cast<double>(values.offsety)};
    const Rect frame = bannerFrame(
        {static_cast<double>(overlay.width), static_cast<double>(overlay.height)}, placement);
    expectRed(visiblePart(frame, overlay), what);
  }

  /// Shows a banner at that anchor in a host whose overlay has these sizes, one after the other.
  void expectBannerToFollowItsHost(std::int64_t embed, const std::vector<Size>& sizes) {
    const RecordOf values{.embed = embed, .width = 100, .height = 60, .offsetx = 10, .offsety = 6};
    HostWindow host(static_cast<int>(sizes[0].width), static_cast<int>(sizes[0].height));
    host.show();
    present(host.view(), redRecord(values));
    for (const Size& size : sizes) {
      host.resizeOverlay(static_cast<int>(size.width), static_cast<int>(size.height));
      expectBanner(host, values,
                   "anchor " + std::to_string(embed) + " in a host that is " +
                       std::to_string(static_cast<int>(size.width)) + " wide");
    }
  }

  /// The host grows, then becomes smaller than the banner.
  void expectBannerToFollowItsHost(std::int64_t embed) {
    expectBannerToFollowItsHost(embed, {{400, 300}, {520, 360}, {80, 40}});
  }

  /// Shows a banner at each of these anchors, one after the other.
  void expectBannersAt(const std::vector<std::int64_t>& anchors, const HostWindow& host,
                       const std::string& where) {
    for (const std::int64_t embed : anchors) {
      const RecordOf values{
          .embed = embed, .width = 100, .height = 60, .offsetx = 10, .offsety = 6};
      const auto presenter = present(host.view(), redRecord(values));
      expectBanner(host, values, "anchor " + std::to_string(embed) + ' ' + where);
      presenter->pushAdViewController()->view()->removeFromSuperview();
    }
  }

  /// What an advertisement without a size gets.
  static void expectContentOfFrameSize(const Window& window) {
    Size outer;
    ASSERT_TRUE(waitFor([&] {
      outer = window.frameRectForContentRect({{0, 0}, {480, 320}}).size;
      return outer != Size{480, 320};
    }));
    PixelBox seen;
    EXPECT_TRUE(waitFor([&] {
      seen = screenPicture().boxOf(kRed);
      return seen.width == outer.width && seen.height == outer.height;
    })) << seen.width
        << " x " << seen.height;
    EXPECT_EQ(window.contentRectForFrameRect(window.frame()).size, outer)
        << "the window's outer size becomes that of its content";
    EXPECT_NEAR(seen.x, (1280 - outer.width) / 2, 1);
    EXPECT_NEAR(seen.y, (1024 - outer.height) / 2, 1);
  }

  static GtkWidget* toplevelOf(const MyPushAdOperator& presenter) {
    const auto content = presenter.popupAdWindow()->contentView();
    return gtk_widget_get_toplevel(dynamic_cast<gtk::NativeView&>(*content).widget());
  }

  std::vector<std::shared_ptr<MyPushAdOperator>> presenters;
  std::vector<std::string> events;
};

}  // namespace

// A page draws nothing below a few pixels, so the numbers leave something to be seen everywhere.

TEST_F(PlacementTest, topRightBannerFollowsItsHost) { expectBannerToFollowItsHost(1); }
TEST_F(PlacementTest, rightBannerFollowsItsHost) { expectBannerToFollowItsHost(2); }
TEST_F(PlacementTest, bottomRightBannerFollowsItsHost) { expectBannerToFollowItsHost(3); }
TEST_F(PlacementTest, bottomBannerFollowsItsHost) { expectBannerToFollowItsHost(4); }
TEST_F(PlacementTest, bottomLeftBannerFollowsItsHost) { expectBannerToFollowItsHost(5); }
TEST_F(PlacementTest, leftBannerFollowsItsHost) { expectBannerToFollowItsHost(6); }
TEST_F(PlacementTest, topLeftBannerFollowsItsHost) { expectBannerToFollowItsHost(7); }
TEST_F(PlacementTest, topBannerFollowsItsHost) { expectBannerToFollowItsHost(8); }
TEST_F(PlacementTest, fallbackBannerFollowsItsHost) { expectBannerToFollowItsHost(9); }

// For the other desktops. None of them moves a window that grows, so that the first size, which
// they place on the screen, is the largest.
TEST_F(PlacementTest, everyBannerFollowsItsHost) {
  for (std::int64_t embed = 1; embed <= 9; ++embed) {
    expectBannerToFollowItsHost(embed, {{520, 360}, {80, 40}, {400, 300}});
  }
}

TEST_F(PlacementTest, aBannerOfAHostThatIsShownLateIsThereWithIt) {
  const RecordOf values{.embed = 1, .width = 100, .height = 60};
  HostWindow host(400, 300);
  present(host.view(), redRecord(values));
  ASSERT_TRUE(waitFor([&] { return !events.empty(); }));
  host.show();
  expectBanner(host, values, "once the host is shown");
}

TEST_F(PlacementTest, aBannerGoesWithAHostThatIsReparented) {
  const RecordOf values{.embed = 3, .width = 100, .height = 60};
  HostWindow host(400, 300);
  host.show();
  present(host.view(), redRecord(values));
  expectBanner(host, values, "at first");

  GtkWidget* overlay = GTK_WIDGET(host.overlay());
  GtkWidget* other = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  g_object_ref(overlay);
  gtk_container_remove(GTK_CONTAINER(gtk_widget_get_parent(overlay)), overlay);
  GtkWidget* frame = gtk_frame_new(nullptr);
  gtk_container_set_border_width(GTK_CONTAINER(frame), 30);
  gtk_container_add(GTK_CONTAINER(other), frame);
  gtk_container_add(GTK_CONTAINER(frame), overlay);
  g_object_unref(overlay);
  gtk_window_resize(GTK_WINDOW(other), 560, 400);
  gtk_widget_show_all(other);
  ASSERT_TRUE(waitFor([&] { return gtk_window_is_active(GTK_WINDOW(other)) != FALSE; }));
  const GdkRectangle place = [&] {
    GdkRectangle box{};
    gdk_window_get_origin(gtk_widget_get_window(other), &box.x, &box.y);
    int x = 0;
    int y = 0;
    gtk_widget_translate_coordinates(overlay, other, 0, 0, &x, &y);
    return GdkRectangle{box.x + x, box.y + y, gtk_widget_get_allocated_width(overlay),
                        gtk_widget_get_allocated_height(overlay)};
  }();
  expectRed(visiblePart({{static_cast<double>(place.width) - 100, 0}, {100, 60}}, place),
            "in the new window");
  gtk_widget_destroy(other);
}

TEST_F(PlacementTest, whereTextsRunToTheLeftBannersStayAtTheirAnchors) {
  HostWindow host(400, 300);
  gtk_widget_set_direction(GTK_WIDGET(host.overlay()), GTK_TEXT_DIR_RTL);
  host.show();
  expectBannersAt({1, 6}, host, "of a view whose texts run to the left");
  gtk_widget_set_default_direction(GTK_TEXT_DIR_RTL);
  HostWindow other(400, 300);
  other.show();
  expectBannersAt({1, 2, 3, 4, 5, 6, 7, 8, 9}, other, "on a desktop whose texts run to the left");
}

TEST_F(PlacementTest, aThemeOfHighContrastLeavesBannersAtTheirAnchors) {
  g_object_set(gtk_settings_get_default(), "gtk-theme-name", "HighContrast", nullptr);
  HostWindow host(400, 300);
  host.show();
  expectBannersAt({3, 7}, host, "under HighContrast");
}

TEST_F(PlacementTest, thePopupsContentIsInTheMiddleOfTheWorkArea) {
  const auto presenter = present(nullptr, redRecord({.embed = 0, .width = 400, .height = 300}));
  expectRed({(1280 - 400) / 2, (1024 - 300) / 2, 400, 300}, "content");
  const Window& window = *presenter->popupAdWindow();
  EXPECT_EQ(window.contentRectForFrameRect(window.frame()), (Rect{{440, 362}, {400, 300}}));
  EXPECT_GT(window.frame().size.height, 300) << "the title bar sits above";
}

TEST_F(PlacementTest, thePopupsContentIsInTheMiddleWithClientDecorations) {
  const auto presenter = present(nullptr, redRecord({.embed = 0, .width = 400, .height = 300}));
  expectRed({(1280 - 400) / 2, (1024 - 300) / 2, 400, 300}, "content");
  const Window& window = *presenter->popupAdWindow();
  EXPECT_EQ(window.contentRectForFrameRect(window.frame()), (Rect{{440, 362}, {400, 300}}));
}

TEST_F(PlacementTest, onAFineScreenThePopupsContentIsInTheMiddle) {
  present(nullptr, redRecord({.embed = 0, .width = 200, .height = 150}));
  expectRed({(1280 - 400) / 2, (1024 - 300) / 2, 400, 300}, "content");
}

TEST_F(PlacementTest, panelsOfTheDesktopTakeTheirPartOfTheWorkArea) {
  constexpr int kPanelHeight = 40;
  GtkWidget* panel = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_type_hint(GTK_WINDOW(panel), GDK_WINDOW_TYPE_HINT_DOCK);
  gtk_window_resize(GTK_WINDOW(panel), 1280, kPanelHeight);
  gtk_widget_realize(panel);
  const std::array<gulong, 4> strut{0, 0, kPanelHeight, 0};  // left, right, top, bottom
  gdk_property_change(gtk_widget_get_window(panel), gdk_atom_intern("_NET_WM_STRUT", FALSE),
                      gdk_atom_intern("CARDINAL", FALSE), 32, GDK_PROP_MODE_REPLACE,
                      reinterpret_cast<const guchar*>(strut.data()), 4);
  gtk_widget_show_all(panel);
  ASSERT_TRUE(waitFor([] {
    GdkRectangle area{};
    gdk_monitor_get_workarea(gdk_display_get_monitor(gdk_display_get_default(), 0), &area);
    return area.y == kPanelHeight;
  }));
  present(nullptr, redRecord({.embed = 0, .width = 400, .height = 300}));
  expectRed({(1280 - 400) / 2, kPanelHeight + (1024 - kPanelHeight - 300) / 2, 400, 300},
            "below the panel");
  gtk_widget_destroy(panel);
}

TEST_F(PlacementTest, thePopupFloatsOverOrdinaryWindows) {
  present(nullptr, redRecord({.embed = 0, .width = 400, .height = 300}));
  expectRed({(1280 - 400) / 2, (1024 - 300) / 2, 400, 300}, "content");
  HostWindow host(900, 800);
  host.show();
  gtk_window_move(host.window(), 40, 40);
  gtk_window_present(host.window());
  ASSERT_TRUE(waitFor([&] { return gtk_window_is_active(host.window()) != FALSE; }));
  expectRed({(1280 - 400) / 2, (1024 - 300) / 2, 400, 300}, "above the host's window");
}

TEST_F(PlacementTest, thePopupIsClosedByItsUserAndShownAgainByALaterPresenter) {
  const auto first = present(nullptr, redRecord({.embed = 0, .width = 400, .height = 300}));
  expectRed({(1280 - 400) / 2, (1024 - 300) / 2, 400, 300}, "content");
  run({"wmctrl", "-F", "-c", "Pop-up"});
  ASSERT_TRUE(waitFor([&] { return events.size() == 2; }));
  EXPECT_THAT(events, ElementsAre(kPushAdWillShowNotification, kPushAdDidCloseNotification));
  EXPECT_FALSE(first->popupAdWindow()->isVisible());
  ASSERT_TRUE(waitFor([] { return screenPicture().boxOf(kRed).width == 0; }));

  // The window still shows the first presenter's page: that is its content for good.
  const auto second = present(nullptr, redRecord({.embed = 0, .width = 300, .height = 200}));
  expectRed({(1280 - 300) / 2, (1024 - 200) / 2, 300, 200}, "shown again");
  EXPECT_EQ(second->popupAdWindow(), first->popupAdWindow());
  EXPECT_EQ(events.size(), 3U);
}

TEST_F(PlacementTest, aPopupWithoutASizeCanBeSeenAndClosed) {
  const auto presenter = present(nullptr, redRecord({.embed = 0, .width = 0, .height = 300}));
  expectContentOfFrameSize(*presenter->popupAdWindow());
  EXPECT_THAT(log->lines(), testing::Not(testing::Contains(testing::HasSubstr(" 264: "))));
  run({"wmctrl", "-F", "-c", "Pop-up"});
  ASSERT_TRUE(waitFor([&] { return events.size() == 2; }));
  present(nullptr, redRecord({.embed = 0, .width = 300, .height = 200}));
  expectRed({(1280 - 300) / 2, (1024 - 200) / 2, 300, 200}, "a later one");
}

TEST_F(PlacementTest, thePopupIsLaidOutAgainWhenTheWindowManagerNamesTheDecorations) {
  const StoppedWindowManager manager;
  const auto presenter = present(nullptr, redRecord({.embed = 0, .width = 0, .height = 300}));
  ASSERT_TRUE(waitFor([&] { return presenter->popupAdWindow()->isVisible(); }));
  const Window& window = *presenter->popupAdWindow();
  EXPECT_EQ(window.frame(), (Rect{{400, 352}, {480, 320}}));
  manager.goOn();
  expectContentOfFrameSize(window);
}

TEST_F(PlacementTest, aPopupWhoseWindowIsDestroyedIsClosedOnceAndALaterOneIsSeen) {
  const auto first = present(nullptr, redRecord({.embed = 0, .width = 400, .height = 300}));
  expectRed({(1280 - 400) / 2, (1024 - 300) / 2, 400, 300}, "content");
  gtk_widget_destroy(toplevelOf(*first));
  ASSERT_TRUE(waitFor([] { return screenPicture().boxOf(kRed).width == 0; }));
  ASSERT_TRUE(waitFor([&] { return events.size() == 2; }));
  EXPECT_THAT(events, ElementsAre(kPushAdWillShowNotification, kPushAdDidCloseNotification));
  const auto second = present(nullptr, redRecord({.embed = 0, .width = 300, .height = 200}));
  EXPECT_EQ(second->popupAdWindow(), first->popupAdWindow());
  expectRed({(1280 - 300) / 2, (1024 - 200) / 2, 300, 200}, "shown again");
  run({"wmctrl", "-F", "-c", "Pop-up"});
  // Both of them hear of their one window's end.
  ASSERT_TRUE(waitFor([&] { return events.size() == 5; }));
  EXPECT_EQ(std::count(events.begin(), events.end(), kPushAdDidCloseNotification), 3);
}

TEST_F(PlacementTest, aLaterPopupBringsAMinimisedOneToTheFront) {
  const auto first = present(nullptr, redRecord({.embed = 0, .width = 400, .height = 300}));
  expectRed({(1280 - 400) / 2, (1024 - 300) / 2, 400, 300}, "content");
  gtk_window_iconify(GTK_WINDOW(toplevelOf(*first)));
  ASSERT_TRUE(waitFor([&] { return !first->popupAdWindow()->isVisible(); }));
  ASSERT_TRUE(waitFor([] { return screenPicture().boxOf(kRed).width == 0; }));
  present(nullptr, redRecord({.embed = 0, .width = 300, .height = 200}));
  expectRed({(1280 - 300) / 2, (1024 - 200) / 2, 300, 200}, "in front");
}

TEST_F(PlacementTest, nothingIsToldOrLoadedForAHostThatIsDestroyedBeforeTheShowing) {
  HostWindow host(400, 300);
  host.show();
  const auto held = host.view();
  const auto presenter = present(held, redRecord({.embed = 1, .width = 100, .height = 60}));
  host.destroy();
  bool isLater = false;
  platform().mainRunLoop->performAfterDelay(0.1, [&] { isLater = true; });
  ASSERT_TRUE(waitFor([&] { return isLater; }));
  serveLoop();
  EXPECT_EQ(presenter->hostView(), nullptr);
  EXPECT_FALSE(presenter->isAdShownAsBanner());
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(
      presenter->pushAdViewController()->legacyWebView()->stringByEvaluatingJavaScriptFromString(
          "document.body.style.background"),
      "");
}

TEST_F(PlacementTest, onTwoMonitorsThePopupIsInTheMiddleOfItsOwn) {
  const auto presenter = present(nullptr, redRecord({.embed = 0, .width = 400, .height = 300}));
  presenter->popupAdWindow()->setFrame({{900, 300}, {300, 200}});  // on the second, before it shows
  expectRed({800 + 200, (900 - 300) / 2, 400, 300}, "on the second monitor");
}

}  // namespace qorix::test
