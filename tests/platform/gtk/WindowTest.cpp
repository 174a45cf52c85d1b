#include "platform/gtk/WidgetView.h"
#include "support/gtk/GtkTest.h"
#include "support/gtk/StoppedWindowManager.h"

namespace qorix::test {

namespace {

class WindowTest : public GtkTest {
 protected:
  WindowTest() {
    platform()
        .notificationCenter
        ->addObserver(kWindowWillCloseNotification,
                      [this](const Notification& notification) {
                        closings.push_back({notification.object(), window->isVisible()});
                      })
        .keep();
  }

  void makeWindow(const Size& size) {
    page.interface->view->setFrame({{0, 0}, size});
    window = platform().windows->createWindowWithContentView(page.interface->view);
    window->setTitle("Pop-up");
  }

  /// Waits for the window manager's word.
  bool waitForDecorations() const {
    return waitFor([this] { return window->frame().size != content().size; });
  }

  Rect content() const { return window->contentRectForFrameRect(window->frame()); }

  // The rectangle of the screen that is red, y downwards.
  static GdkRectangle redArea() {
    const PixelBox box = screenPicture().boxOf(kRed);
    return {box.x, box.y, box.width, box.height};
  }

  static bool isRedExactlyAt(const GdkRectangle& expected) {
    const GdkRectangle area = redArea();
    return gdk_rectangle_equal(&area, &expected) != FALSE;
  }

  /// Shows the window `rounds` times, as a presenter does. Its user closes it each time, and
  /// resizes or maximises it before now and then.
  void expectSamePlaceEachTime(const GdkRectangle& place, int rounds) {
    constexpr Rect kAsked = {{200, 150}, {240, 180}};
    makeWindow(kAsked.size);
    page.load(kRedPage);
    const auto isSeen = [&place] {
      return colorAt(place.x + place.width / 2, place.y + place.height / 2) == kRed;
    };
    GdkRectangle first{};
    for (int round = 0; round < rounds; ++round) {
      window->makeKeyAndOrderFront();
      window->setFrame(window->frameRectForContentRect(kAsked));
      ASSERT_TRUE(waitFor(isSeen)) << "round " << round;
      if (round < 4 || round == rounds - 1) {  // a look at all of the screen takes its time
        ASSERT_TRUE(waitFor([&] { return isRedExactlyAt(place); }))
            << "round " << round << ": " << redArea().x << " " << redArea().y << " "
            << redArea().width << " " << redArea().height;
      }
      first = round == 0 ? nativeArea() : first;
      EXPECT_TRUE(waitFor([&] {
        const GdkRectangle area = nativeArea();
        return gdk_rectangle_equal(&area, &first) != FALSE;
      })) << "round "
          << round;
      EXPECT_EQ(content(), kAsked);
      if (round == 1) {
        run({"wmctrl", "-r", "Pop-up", "-e", "10,100,100,900,700"});
        ASSERT_TRUE(waitFor([] { return redArea().width > 800; }));
      } else if (round == 2) {
        run({"wmctrl", "-r", "Pop-up", "-b", "add,maximized_vert,maximized_horz"});
        ASSERT_TRUE(waitFor([] { return redArea().width > 1200; }));
      }
      closeByUser();
      ASSERT_TRUE(waitFor([&] { return !window->isVisible() && !isSeen(); }));
    }
  }

  GdkRectangle nativeArea() const {
    GdkWindow* nativeWindow = gtk_widget_get_window(GTK_WIDGET(native()));
    GdkRectangle area{};
    gdk_window_get_origin(nativeWindow, &area.x, &area.y);
    area.width = gdk_window_get_width(nativeWindow);
    area.height = gdk_window_get_height(nativeWindow);
    return area;
  }

  GtkWindow* native() const {
    return GTK_WINDOW(
        gtk_widget_get_toplevel(dynamic_cast<gtk::NativeView&>(*window->contentView()).widget()));
  }

  void destroyNative() { gtk_widget_destroy(GTK_WIDGET(native())); }

  void closeByUser() { run({"wmctrl", "-F", "-c", "Pop-up"}); }

  struct Closing {
    std::shared_ptr<Object> object;
    bool wasVisible;
  };

  Page page;
  std::shared_ptr<Window> window;
  std::vector<Closing> closings;
};

}  // namespace

TEST_F(WindowTest, contentLiesExactlyWhereAskedAfterTheFirstShow) {
  makeWindow({200, 150});
  page.load(kRedPage);
  window->makeKeyAndOrderFront();
  const Rect asked = {{321, 234}, {400, 300}};
  window->setFrame(window->frameRectForContentRect(asked));
  EXPECT_EQ(content(), asked);
  EXPECT_TRUE(waitFor([] {
    return isRedExactlyAt({321, 1024 - 234 - 300, 400, 300});
  })) << redArea().x
      << " " << redArea().y << " " << redArea().width << " " << redArea().height;
  EXPECT_EQ(content(), asked);
  EXPECT_EQ(page.interface->view->frame().size, (Size{400, 300}));
  EXPECT_GT(window->frame().size.height, 300) << "there is a title bar";
}

TEST_F(WindowTest, contentLiesExactlyWhereAskedWithClientDecorations) {
  makeWindow({200, 150});
  page.load(kRedPage);
  const Rect early = {{100, 100}, {300, 200}};
  const Rect frame = window->frameRectForContentRect(early);
  EXPECT_GT(frame.size.height, 210) << "the title bar is known at once";
  EXPECT_EQ(frame.size.width, 300) << "nobody sees the border for the shadow";
  EXPECT_EQ(frame.origin, early.origin);
  window->setFrame(frame);
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(waitFor([] { return isRedExactlyAt({100, 1024 - 100 - 200, 300, 200}); }));
  EXPECT_EQ(window->frame(), frame);
  const Rect asked = {{321, 234}, {400, 300}};
  window->setFrame(window->frameRectForContentRect(asked));
  EXPECT_TRUE(waitFor([] { return isRedExactlyAt({321, 1024 - 234 - 300, 400, 300}); }));
  EXPECT_EQ(content(), asked);
  EXPECT_EQ(page.interface->view->frame(), (Rect{{0, 0}, {400, 300}}));
}

TEST_F(WindowTest, followsItsUserWithClientDecorations) {
  makeWindow({300, 200});
  page.load(kRedPage);
  window->setFrame(window->frameRectForContentRect({{100, 100}, {300, 200}}));
  window->makeKeyAndOrderFront();
  ASSERT_TRUE(waitFor([] { return isRedExactlyAt({100, 1024 - 100 - 200, 300, 200}); }));
  run({"wmctrl", "-r", "Pop-up", "-e", "10,500,400,400,300"});
  ASSERT_TRUE(waitFor([&] { return content().origin.x > 500; }));
  EXPECT_TRUE(waitFor([&] {
    const PixelBox seen = screenPicture().boxOf(kRed);
    return PixelBox{500 + 26, 400 + 60, 400 - 52, 300 - 89} == seen &&
           content() == Rect{{526, 1024.0 - 460 - 211}, {348, 211}};
  })) << "a shadow of 26 points, 23 above, and a title bar of 37";
  run({"wmctrl", "-r", "Pop-up", "-b", "add,maximized_vert,maximized_horz"});
  EXPECT_TRUE(waitFor([&] {
    return window->frame() == Rect{{0, 0}, {1280, 1024}};
  })) << "without any shadow";
  closeByUser();
  ASSERT_TRUE(waitFor([&] { return !window->isVisible(); }));
}

TEST_F(WindowTest, onAFineScreenContentLiesExactlyWhereAsked) {
  makeWindow({200, 150});
  page.load(kRedPage);
  ASSERT_TRUE(waitForDecorations());
  window->setFrame(window->frameRectForContentRect({{50, 60}, {200, 100}}));
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(waitFor([] { return isRedExactlyAt({100, 1024 - 120 - 200, 400, 200}); }));
  const Rect asked = {{80, 90}, {300, 150}};
  window->setFrame(window->frameRectForContentRect(asked));
  EXPECT_TRUE(waitFor([] { return isRedExactlyAt({160, 1024 - 180 - 300, 600, 300}); }));
  EXPECT_EQ(content(), asked);
  EXPECT_EQ(window->screen()->visibleFrame(), (Rect{{0, 0}, {640, 512}}));
}

TEST_F(WindowTest, onAFineScreenContentLiesExactlyWhereAskedWithClientDecorations) {
  makeWindow({200, 150});
  page.load(kRedPage);
  const Rect asked = {{80, 90}, {300, 150}};
  window->setFrame(window->frameRectForContentRect(asked));
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(waitFor([] { return isRedExactlyAt({160, 1024 - 180 - 300, 600, 300}); }));
  EXPECT_EQ(content(), asked);
}

TEST_F(WindowTest, frameSetBeforeTheFirstShowHolds) {
  makeWindow({200, 150});
  page.load(kRedPage);
  window->setFrame(window->frameRectForContentRect({{100, 100}, {300, 200}}));
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(waitFor([] { return isRedExactlyAt({100, 1024 - 100 - 200, 300, 200}); }));
  EXPECT_EQ(content(), (Rect{{100, 100}, {300, 200}}));
}

TEST_F(WindowTest, decorationsBecomeKnownBeforeTheFirstShow) {
  makeWindow({200, 150});
  ASSERT_TRUE(waitForDecorations());
  const Rect before = window->frameRectForContentRect({{0, 0}, {100, 100}});
  EXPECT_GT(before.size.height, 110);
  window->makeKeyAndOrderFront();
  ASSERT_TRUE(waitFor([] { return !run({"wmctrl", "-l"}).empty(); }));
  EXPECT_EQ(window->frameRectForContentRect({{0, 0}, {100, 100}}), before);
  EXPECT_EQ(window->contentRectForFrameRect(before), (Rect{{0, 0}, {100, 100}}));
}

TEST_F(WindowTest, aFrameSetBeforeTheDecorationsAreKnownHoldsAfterwards) {
  makeWindow({200, 150});
  const Rect frame = {{100, 200}, {300, 250}};
  window->setFrame(frame);
  EXPECT_EQ(content(), frame) << "nobody has waited for the window manager";
  ASSERT_TRUE(waitForDecorations());
  EXPECT_EQ(window->frame(), frame);
  window->center();
  const Rect centered = window->frame();
  window.reset();
  makeWindow({200, 150});
  window->setFrame({{5000, 5000}, {300, 250}});
  window->center();
  ASSERT_TRUE(waitForDecorations());
  EXPECT_EQ(content().size, (Size{300, 250}));
  EXPECT_EQ(window->frame().origin.x + window->frame().size.width / 2,
            centered.origin.x + centered.size.width / 2);
  EXPECT_EQ(window->frame().origin.y + window->frame().size.height / 2,
            centered.origin.y + centered.size.height / 2);
}

TEST_F(WindowTest, aWindowManagerThatDoesNotAnswerHoldsNobodyUp) {
  const StoppedWindowManager manager;
  constexpr double kHardlyNoticed = 0.1;  // seconds
  double fastest = kPatience;
  for (int round = 0; round < 5; ++round) {  // the machine may be busy, too
    const gint64 begin = g_get_monotonic_time();
    makeWindow({200, 150});
    window->makeKeyAndOrderFront();
    window->setFrame(window->frameRectForContentRect({{100, 100}, {300, 200}}));
    fastest = std::min(fastest, static_cast<double>(g_get_monotonic_time() - begin) / 1e6);
    EXPECT_TRUE(window->isVisible());
    window.reset();
  }
  EXPECT_LT(fastest, kHardlyNoticed);
}

TEST_F(WindowTest, fractionsAreKept) {
  makeWindow({200, 150});
  window->makeKeyAndOrderFront();
  const Rect asked = {{520, 311.5}, {400, 300}};
  window->setFrame(window->frameRectForContentRect(asked));
  EXPECT_TRUE(waitFor([&] { return page.interface->view->frame().size == asked.size; }));
  serveLoop();
  EXPECT_EQ(content(), asked);
}

TEST_F(WindowTest, neitherGrowsNorWanders) { expectSamePlaceEachTime({200, 694, 240, 180}, 10); }
TEST_F(WindowTest, neitherGrowsNorWandersWithClientDecorations) {
  expectSamePlaceEachTime({200, 694, 240, 180}, 10);
}
TEST_F(WindowTest, onAFineScreenItNeitherGrowsNorWanders) {
  expectSamePlaceEachTime({400, 364, 480, 360}, 4);
}

TEST_F(WindowTest, closingByTheUserIsToldOnceAndTheWindowCanBeShownAgain) {
  makeWindow({200, 150});
  page.load(kRedPage);
  window->setFrame(window->frameRectForContentRect({{100, 100}, {300, 200}}));
  for (std::size_t round = 1; round <= 3; ++round) {
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(window->isVisible());
    ASSERT_TRUE(waitFor([] {
      return isRedExactlyAt({100, 1024 - 100 - 200, 300, 200});
    })) << redArea().x
        << " " << redArea().y << " round " << round;
    closeByUser();
    ASSERT_TRUE(waitFor([&] { return !window->isVisible(); }));
    ASSERT_EQ(closings.size(), round);
    EXPECT_EQ(closings.back().object, window);
    EXPECT_TRUE(closings.back().wasVisible);
    ASSERT_TRUE(waitFor([] { return redArea().width <= 0; }));
  }
  window->close();
  EXPECT_EQ(closings.size(), 3U) << "a hidden window is not closed";
}

TEST_F(WindowTest, windowClosedByItsOwnClosingIsToldOnce) {
  makeWindow({200, 150});
  platform()
      .notificationCenter
      ->addObserver(kWindowWillCloseNotification, [this](const Notification&) { window->close(); })
      .keep();
  window->makeKeyAndOrderFront();
  window->close();
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(closings.size(), 1U);
}

TEST_F(WindowTest, floatingLevelSurvivesHiding) {
  makeWindow({300, 200});
  page.load(kRedPage);
  window->setLevel(WindowLevel::floating);
  HostWindow host(900, 700);
  for (int round = 0; round < 2; ++round) {
    window->makeKeyAndOrderFront();
    ASSERT_TRUE(waitFor([] { return redArea().width == 300; }));
    host.show();
    const std::string clients = run({"xprop", "-name", "Pop-up", "_NET_WM_STATE"});
    EXPECT_NE(clients.find("_NET_WM_STATE_ABOVE"), std::string::npos) << clients;
    EXPECT_TRUE(waitFor([] { return redArea().width == 300 && redArea().height == 200; }));
    window->close();
    ASSERT_TRUE(waitFor([] { return redArea().width <= 0; }));
  }
}

TEST_F(WindowTest, followsWhereTheUserMovesIt) {
  makeWindow({300, 200});
  page.load(kRedPage);
  window->setFrame(window->frameRectForContentRect({{100, 100}, {300, 200}}));
  window->makeKeyAndOrderFront();
  ASSERT_TRUE(waitFor([] { return isRedExactlyAt({100, 1024 - 100 - 200, 300, 200}); }));
  run({"wmctrl", "-r", "Pop-up", "-e", "10,500,400,250,180"});
  ASSERT_TRUE(waitFor([&] { return content().origin.x == 500; }));
  ASSERT_TRUE(waitFor([] { return isRedExactlyAt({500, 400, 250, 180}); }));
  EXPECT_EQ(content(), (Rect{{500, 1024 - 400 - 180}, {250, 180}}));
  closeByUser();
  ASSERT_TRUE(waitFor([&] { return !window->isVisible(); }));
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(waitFor([] {
    return isRedExactlyAt({500, 400, 250, 180});
  })) << "and comes back there";
}

TEST_F(WindowTest, becomesSmallerThanItsPage) {
  makeWindow({300, 200});
  page.loadAndWait("<body style='margin:0;background:#f00;width:2000px;height:2000px'></body>");
  window->makeKeyAndOrderFront();
  window->setFrame(window->frameRectForContentRect({{200, 200}, {120, 60}}));
  EXPECT_TRUE(waitFor([&] { return page.webView()->frame().size == Size{120, 60}; }));
  EXPECT_EQ(content().size, (Size{120, 60}));
}

TEST_F(WindowTest, screenIsTheWorkAreaAndNullBesideIt) {
  makeWindow({300, 200});
  const auto screen = window->screen();
  ASSERT_NE(screen, nullptr);
  EXPECT_EQ(screen->visibleFrame(), (Rect{{0, 0}, {1280, 1024}}));
  window->setFrame({{5000, 5000}, {100, 100}});
  EXPECT_EQ(window->screen(), nullptr);
  window->center();
  EXPECT_EQ(window->frame(), (Rect{{590, 462}, {100, 100}}));
}

TEST_F(WindowTest, borderlessWindowStaysHiddenAndItsPageLoads) {
  const auto stub = platform().windows->createBorderlessWindow({{10000, 10000}, {100, 100}});
  ASSERT_NE(stub, nullptr);
  EXPECT_FALSE(stub->isVisible());
  EXPECT_EQ(stub->contentView()->frame().size, (Size{100, 100}));
  EXPECT_EQ(stub->frame(), (Rect{{10000, 10000}, {100, 100}}));
  stub->contentView()->addSubview(page.interface->view);
  page.interface->view->setFrame({{0, 0}, {80, 40}});
  page.loadAndWait("<script>var answer = 6 * 7</script>");
  EXPECT_EQ(page.evaluate("answer"), "42");
  EXPECT_EQ(page.interface->view->frame(), (Rect{{0, 0}, {80, 40}}));
  EXPECT_EQ(page.interface->view->superview(), stub->contentView());
}

TEST_F(WindowTest, destroyedByTheHostItIsClosedAndTheNextShowingMakesAnotherOne) {
  makeWindow({300, 200});
  page.load(kRedPage);
  window->setLevel(WindowLevel::floating);
  ASSERT_TRUE(waitForDecorations());
  for (std::size_t round = 1; round <= 2; ++round) {
    const Rect frame = window->frameRectForContentRect({{100, 100}, {300, 200}});
    window->setFrame(frame);
    window->makeKeyAndOrderFront();
    ASSERT_TRUE(waitFor([] { return isRedExactlyAt({100, 1024 - 100 - 200, 300, 200}); }));
    const std::string state = run({"xprop", "-name", "Pop-up", "_NET_WM_STATE"});
    EXPECT_NE(state.find("_NET_WM_STATE_ABOVE"), std::string::npos) << state;
    destroyNative();
    ASSERT_EQ(closings.size(), round);
    EXPECT_TRUE(closings.back().wasVisible);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->frame(), frame);
    ASSERT_TRUE(waitFor([] { return redArea().width <= 0; }));
  }
  EXPECT_EQ(page.delegate->mainLoads(), 1) << "the page goes on";
}

TEST_F(WindowTest, withoutItsNativeWindowItKeepsWhatItIsTold) {
  makeWindow({300, 200});
  destroyNative();
  EXPECT_TRUE(closings.empty()) << "it was not visible";
  window->close();
  EXPECT_TRUE(closings.empty());
  const Rect frame = window->frameRectForContentRect({{200, 300}, {250, 150}});
  window->setFrame(frame);
  window->setTitle("Another");
  EXPECT_EQ(window->frame(), frame);
  ASSERT_NE(window->screen(), nullptr);
  EXPECT_EQ(window->contentView(), page.interface->view);
  page.load(kRedPage);
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(waitFor([] { return isRedExactlyAt({200, 1024 - 300 - 150, 250, 150}); }));
  EXPECT_FALSE(run({"xprop", "-name", "Another", "WM_NAME"}).empty());
}

TEST_F(WindowTest, destroyedByTheObserverOfItsClosingItIsVisibleToTheOthersStill) {
  makeWindow({300, 200});
  window->makeKeyAndOrderFront();
  bool wasVisible = false;
  platform()
      .notificationCenter
      ->addObserver(kWindowWillCloseNotification, [this](const Notification&) { destroyNative(); })
      .keep();
  platform()
      .notificationCenter
      ->addObserver(kWindowWillCloseNotification,
                    [&](const Notification&) { wasVisible = window->isVisible(); })
      .keep();
  window->close();
  EXPECT_TRUE(wasVisible);
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(closings.size(), 1U);
}

TEST_F(WindowTest, minimisedItIsNotVisibleAndComesToTheFront) {
  makeWindow({300, 200});
  page.load(kRedPage);
  const auto minimise = [this] {
    ASSERT_TRUE(waitFor([] { return redArea().width == 300; }));
    gtk_window_iconify(native());
    ASSERT_TRUE(waitFor([this] { return !window->isVisible(); }));
    ASSERT_TRUE(waitFor([] { return redArea().width <= 0; }));
  };
  window->makeKeyAndOrderFront();
  minimise();
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(waitFor([this] { return window->isVisible(); }));
  minimise();
  closeByUser();
  ASSERT_TRUE(waitFor([this] { return closings.size() == 1; }));
  EXPECT_FALSE(closings.back().wasVisible);
  EXPECT_FALSE(gtk_widget_get_visible(GTK_WIDGET(native())));
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(waitFor([this] { return window->isVisible() && redArea().width == 300; }))
      << "and not as an icon";
}

TEST_F(WindowTest, isShownInFrontAndWithTheKeyboard) {
  HostWindow host(900, 700);
  makeWindow({300, 200});
  page.load(kRedPage);
  for (int round = 0; round < 2; ++round) {
    host.show();
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(waitFor([this] { return gtk_window_is_active(native()) != FALSE; }));
    EXPECT_TRUE(waitFor([] { return redArea().width == 300 && redArea().height == 200; }));
    gtk_window_iconify(native());
    ASSERT_TRUE(waitFor([this] { return !window->isVisible(); }));
  }
}

TEST_F(WindowTest, aWindowWithoutExtentIsOnTheScreenThatItLiesOn) {
  makeWindow({0, 0});
  EXPECT_NE(window->screen(), nullptr);
  window->setFrame({{100, 100}, {0, 0}});
  EXPECT_NE(window->screen(), nullptr);
}

TEST_F(WindowTest, releasedWindowLeavesItsContentAlone) {
  makeWindow({300, 200});
  window->makeKeyAndOrderFront();
  serveLoop();
  window.reset();
  EXPECT_FALSE(page.interface->webView.expired());
  page.loadAndWait("<p>still here</p>");
}

TEST_F(WindowTest, onTwoMonitorsTheScreenIsTheOneThatHoldsMostOfTheWindow) {
  makeWindow({300, 200});
  page.load(kRedPage);
  window->makeKeyAndOrderFront();
  window->setFrame(window->frameRectForContentRect({{700, 300}, {300, 200}}));
  ASSERT_EQ(gdk_display_get_n_monitors(gdk_display_get_default()), 2);
  ASSERT_NE(window->screen(), nullptr);
  EXPECT_EQ(window->screen()->visibleFrame(), (Rect{{800, 0}, {800, 900}}));
  EXPECT_TRUE(waitFor([] { return isRedExactlyAt({700, 400, 300, 200}); }));
  window->setFrame(window->frameRectForContentRect({{600, 300}, {300, 200}}));
  EXPECT_EQ(window->screen()->visibleFrame(), (Rect{{0, 0}, {800, 900}}));
  run({"wmctrl", "-r", "Pop-up", "-e", "10,1100,300,300,200"});
  ASSERT_TRUE(waitFor([] { return isRedExactlyAt({1100, 300, 300, 200}); }));
  ASSERT_TRUE(waitFor([&] { return content().origin.x == 1100; }));
  EXPECT_EQ(window->screen()->visibleFrame(), (Rect{{800, 0}, {800, 900}}));
  window->center();
  EXPECT_TRUE(waitFor([&] {
    const GdkRectangle red = redArea();
    return red.x + red.width / 2 == 1200 && red.width == 300;
  }));
}

}  // namespace qorix::test
