#include <functional>
#include <memory>
#include <ostream>
#include <vector>

#include "fakes/FakeWindow.h"
#include "platform/gtk/ToplevelWindow.h"
#include "platform/gtk/WidgetView.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {
namespace {

struct WindowImplementation {
  const char* name;
  std::function<std::shared_ptr<WindowFactory>()> makeFactory;
  std::function<std::shared_ptr<View>()> makeView;

  friend void PrintTo(const WindowImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

/// What every window does.
class WindowContractTest : public GtkTest,
                           public testing::WithParamInterface<WindowImplementation> {
 protected:
  WindowContractTest() {
    view->setFrame({{10, 20}, {300, 200}});
    window = factory->createWindowWithContentView(view);
    platform()
        .notificationCenter
        ->addObserver(kWindowWillCloseNotification,
                      [this](const Notification& notification) {
                        EXPECT_EQ(notification.object(), window);
                        EXPECT_TRUE(window->isVisible());
                        ++closings;
                      })
        .keep();
  }

  const std::shared_ptr<WindowFactory> factory = GetParam().makeFactory();
  const std::shared_ptr<View> view = GetParam().makeView();
  std::shared_ptr<Window> window;
  int closings = 0;
};

}  // namespace

TEST_P(WindowContractTest, isHiddenAtFirstAndAsLargeAsItsContent) {
  EXPECT_EQ(window->contentView(), view);
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(window->contentRectForFrameRect(window->frame()).size, (Size{300, 200}));
}

TEST_P(WindowContractTest, frameIsWhatWasSet) {
  const Rect frame = window->frameRectForContentRect({{100, 311.5}, {400, 300}});
  window->setFrame(frame);
  EXPECT_EQ(window->frame(), frame);
}

TEST_P(WindowContractTest, frameHasATitleBarAboveTheContent) {
  const Rect content = {{100, 200}, {400, 300}};
  ASSERT_TRUE(waitFor([&] { return window->frameRectForContentRect(content) != content; }))
      << "the desktop may take a moment to name it";
  const Rect frame = window->frameRectForContentRect(content);
  EXPECT_GT(frame.origin.y + frame.size.height, content.origin.y + content.size.height);
  EXPECT_LE(frame.origin.x, content.origin.x);
  EXPECT_EQ(window->contentRectForFrameRect(frame), content);
}

TEST_P(WindowContractTest, closingIsToldOnceAndHides) {
  window->close();
  EXPECT_EQ(closings, 0) << "it is not visible";
  for (int round = 1; round <= 2; ++round) {
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(window->isVisible());
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(closings, round);
    window->close();
    EXPECT_EQ(closings, round);
  }
}

TEST_P(WindowContractTest, contentOwnerLivesWithTheWindow) {
  auto owner = std::make_shared<Object>();
  const std::weak_ptr<Object> weak = owner;
  window->setContentOwner(std::move(owner));
  EXPECT_FALSE(weak.expired());
  window->setContentOwner(nullptr);
  EXPECT_TRUE(weak.expired());
}

TEST_P(WindowContractTest, borderlessWindowIsAllContentAndHidden) {
  const Rect place = {{10000, 10000}, {100, 100}};
  const auto stub = factory->createBorderlessWindow(place);
  EXPECT_FALSE(stub->isVisible());
  EXPECT_EQ(stub->frame(), place);
  EXPECT_EQ(stub->frameRectForContentRect(place), place);
  EXPECT_EQ(stub->contentView()->frame(), (Rect{{0, 0}, {100, 100}}));
}

INSTANTIATE_TEST_SUITE_P(
    , WindowContractTest,
    testing::Values(
        WindowImplementation{"Fake", [] { return std::make_shared<FakeWindowFactory>(); },
                             [] { return std::make_shared<FakeView>(); }},
        WindowImplementation{"Gtk", [] { return std::make_shared<gtk::ToplevelWindowFactory>(); },
                             [] {
                               return gtk::makeNativeView<gtk::WidgetView<View>>(
                                   gtk_overlay_new(), gtk::Ownership::viewOwnsWidget);
                             }}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace qorix::test
