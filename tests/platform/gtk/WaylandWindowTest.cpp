// The pop-up's window on Wayland, where a program neither places its windows nor raises them.

#include <cstdlib>

#include "platform/gtk/WidgetView.h"
#include "support/TemporaryFolder.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

/// What sway shows on that output.
Picture outputPicture(const std::string& output = "HEADLESS-1") {
  const TemporaryFolder folder;
  const std::string file = folder / "picture.ppm";
  run({"grim", "-t", "ppm", "-o", output, file});
  return *readPicture(file);
}

PixelBox redOn(const std::string& output = "HEADLESS-1") {
  return outputPicture(output).boxOf(kRed);
}

void tellSway(const std::string& command) { run({"swaymsg", command}); }

class WaylandWindowTest : public GtkTest {
 protected:
  WaylandWindowTest() {
    if (std::getenv("SWAYSOCK") != nullptr) {
      // Tiled hosts: sway raises a floating one above its own children.
      tellSway("for_window [title=Host] floating disable");
    }
  }

  void makeWindow() {
    page.interface->view->setFrame({{0, 0}, kSize});
    window = platform().windows->createWindowWithContentView(page.interface->view);
    window->setTitle("Pop-up");
    window->setLevel(WindowLevel::floating);
    page.load(kRedPage);
  }

  /// As a presenter does.
  void show() {
    window->makeKeyAndOrderFront();
    const Rect content = {{200, 150}, kSize};
    window->setFrame(window->frameRectForContentRect(content));
  }

  GtkWindow* native() const {
    return GTK_WINDOW(
        gtk_widget_get_toplevel(dynamic_cast<gtk::NativeView&>(*window->contentView()).widget()));
  }

  GtkWindow* parent() const { return gtk_window_get_transient_for(native()); }

  static void showHost(const HostWindow& host) {
    gtk_widget_show_all(GTK_WIDGET(host.window()));
    ASSERT_TRUE(
        waitFor([&] { return gtk_widget_get_allocated_width(GTK_WIDGET(host.overlay())) > 1; }));
  }

  void closeByUser(const std::string& output = "HEADLESS-1") const {
    tellSway("[title=Pop-up] kill");
    EXPECT_TRUE(waitFor([&] { return !window->isVisible() && redOn(output).width <= 0; }));
  }

  /// Waits until the window is seen in its size, and returns where.
  static PixelBox waitForContent() {
    PixelBox seen;
    EXPECT_TRUE(waitFor([&] {
      seen = redOn();
      return seen.width == kSize.width && seen.height == kSize.height;
    })) << seen.width
        << " x " << seen.height;
    return seen;
  }

  static constexpr Size kSize = {300, 200};
  Page page;
  std::shared_ptr<Window> window;
};

}  // namespace

TEST_F(WaylandWindowTest, neitherGrowsNorWandersAboveItsHost) {
  HostWindow host(600, 400);
  ASSERT_NE(host.view(), nullptr);
  showHost(host);
  makeWindow();
  PixelBox first;
  for (int round = 0; round < 10; ++round) {
    show();
    EXPECT_EQ(parent(), host.window());
    ASSERT_TRUE(waitFor([this] { return page.interface->view->frame() == Rect{{}, kSize}; }));
    if (round >= 3 && round < 9) {
      gtk_window_close(native());
      ASSERT_TRUE(waitFor([this] { return !window->isVisible(); }));
      continue;
    }
    const PixelBox seen = waitForContent();
    first = round == 0 ? seen : first;
    EXPECT_EQ(seen, first) << "round " << round;
    EXPECT_EQ(window->contentRectForFrameRect(window->frame()).size, kSize);
    if (round == 1) {
      tellSway("[title=Pop-up] resize set 500 400, move position 10 10");
      ASSERT_TRUE(waitFor([] { return redOn().width > 400; }));
    }
    closeByUser();
    EXPECT_EQ(parent(), nullptr);
  }
}

TEST_F(WaylandWindowTest, staysAboveAHostThatIsRaisedOrShownAgain) {
  HostWindow host(600, 400);
  ASSERT_NE(host.view(), nullptr);
  showHost(host);
  makeWindow();
  show();
  waitForContent();
  tellSway("[title=Host] focus");
  constexpr Pixel kFocusedTitleBar = {0x28, 0x55, 0x77};
  ASSERT_TRUE(waitFor([&] { return outputPicture().countOf(kFocusedTitleBar) > 15'000; }));
  waitForContent();
  gtk_widget_hide(GTK_WIDGET(host.window()));
  EXPECT_EQ(parent(), host.window()) << "there is no other";
  ASSERT_TRUE(waitFor([] { return outputPicture().countOf(kYellow) == 0; }));
  gtk_widget_show(GTK_WIDGET(host.window()));
  ASSERT_TRUE(waitFor([] { return outputPicture().countOf(kYellow) > 0; }));
  EXPECT_EQ(parent(), host.window());
  waitForContent();
}

TEST_F(WaylandWindowTest, getsAnotherParentWhenItsOwnGoes) {
  HostWindow first(400, 300);
  HostWindow second(500, 300);
  HostWindow third(300, 200);
  showHost(first);
  showHost(second);
  ASSERT_NE(first.view(), nullptr);
  makeWindow();
  show();
  EXPECT_EQ(parent(), first.window()) << "it was given to the library";
  showHost(third);
  ASSERT_NE(third.view(), nullptr);
  first.destroy();
  EXPECT_EQ(parent(), third.window());
  gtk_widget_hide(GTK_WIDGET(third.window()));
  EXPECT_EQ(parent(), second.window());
  second.destroy();
  EXPECT_EQ(parent(), nullptr);
  third.destroy();
  serveLoop();
  EXPECT_TRUE(window->isVisible());
}

TEST_F(WaylandWindowTest, tellsTheCompositorOfAParentThatIsShownAgainUnderWeston) {
  HostWindow host(600, 400);
  showHost(host);
  makeWindow();
  show();
  serveLoop();
  testing::internal::CaptureStderr();
  gtk_widget_hide(GTK_WIDGET(host.window()));
  gtk_widget_show(GTK_WIDGET(host.window()));
  gdk_display_flush(gdk_display_get_default());
  EXPECT_NE(testing::internal::GetCapturedStderr().find("set_parent(xdg_toplevel@"),
            std::string::npos);
}

TEST_F(WaylandWindowTest, isShownAndClosedWithoutAHostWindow) {
  makeWindow();
  for (int round = 0; round < 2; ++round) {
    show();
    EXPECT_EQ(parent(), nullptr);
    ASSERT_TRUE(waitFor([] { return redOn().width > 0; }));
    closeByUser();
  }
}

TEST_F(WaylandWindowTest, goesDownWithItsHostAndIsShownAgain) {
  HostWindow host(600, 400);
  showHost(host);
  makeWindow();
  show();
  waitForContent();
  gtk_widget_destroy(GTK_WIDGET(native()));
  EXPECT_FALSE(window->isVisible());
  show();
  EXPECT_EQ(parent(), host.window());
  waitForContent();
}

TEST_F(WaylandWindowTest, onTwoOutputsItHasItsSizeInPointsOnBoth) {
  HostWindow host(400, 300);
  showHost(host);
  makeWindow();
  int scaleOfHost = 1;
  for (const int scale : {1, 2, 1}) {
    const std::string output = "HEADLESS-" + std::to_string(scale);
    if (scale != std::exchange(scaleOfHost, scale)) {
      tellSway("[title=Host] move container to output " + output);
      tellSway("focus output " + output);
    }
    show();
    PixelBox seen;
    EXPECT_TRUE(waitFor([&] {
      seen = redOn(output);
      return seen.width == scale * kSize.width && seen.height == scale * kSize.height;
    })) << seen.width
        << " x " << seen.height << " at scale " << scale;
    EXPECT_EQ(page.interface->view->frame().size, kSize);
    closeByUser(output);
  }
}

TEST_F(WaylandWindowTest, hasItsContentsSizeWithATitleBarOfItsOwnUnderWeston) {
  HostWindow host(600, 400);
  showHost(host);
  makeWindow();
  const Rect content = {{200, 150}, kSize};
  const Rect frame = window->frameRectForContentRect(content);
  EXPECT_EQ(frame.origin, content.origin);
  EXPECT_EQ(frame.size.width, content.size.width);
  EXPECT_GT(frame.size.height, content.size.height + 20);
  EXPECT_EQ(window->contentRectForFrameRect(frame), content);
  int nativeWidth = 0;
  for (int round = 0; round < 10; ++round) {
    show();
    EXPECT_EQ(parent(), host.window());
    ASSERT_TRUE(waitFor([this] { return gtk_widget_get_mapped(GTK_WIDGET(native())) != FALSE; }));
    ASSERT_TRUE(waitFor([this] { return page.interface->view->frame() == Rect{{0, 0}, kSize}; }));
    serveLoop();
    EXPECT_EQ(window->frame(), frame) << "round " << round;
    const int width = gdk_window_get_width(gtk_widget_get_window(GTK_WIDGET(native())));
    EXPECT_GT(width, kSize.width) << "the shadow";
    nativeWidth = round == 0 ? width : nativeWidth;
    EXPECT_EQ(width, nativeWidth);
    if (round == 1) {
      gtk_window_resize(native(), 500, 400);
      ASSERT_TRUE(waitFor([this] { return page.interface->view->frame().size.width == 500; }));
    }
    gtk_window_close(native());
    ASSERT_TRUE(waitFor([this] { return !window->isVisible(); }));
  }
}

}  // namespace qorix::test
