// A host that links the library as others do: by its public target, with the public headers alone.

#include <gtest/gtest.h>

#include <filesystem>

#include <qorix/gtk3.h>
#include <qorix/platform/MemoryUserDefaults.h>
#include <qorix/qorix.h>

namespace {

TEST(GuestTest, reachesNoPrivateHeader) {
#if __has_include("definition/AdReader.h") ||                        \
                  __has_include("platform/gtk/WidgetView.h") ||      \
                                __has_include("text/AsciiCase.h") || \
                                              __has_include("platform/View.h")
  FAIL() << "a private header is reachable";
#endif
}

TEST(GuestTest, startsTheLibrary) {
  const auto manager = qorix::gtk::start({
      .bundleIdentifier = "com.example.guest",
      .settings = std::make_shared<qorix::MemoryUserDefaults>(),
  });
  EXPECT_EQ(manager, qorix::MyPushAdManager::sharedPushAdManager());
  EXPECT_EQ(manager->appBundleIdentifier(), "com.example.guest");
}

TEST(GuestTest, startReturnsNoManagerToAHostThatHasItsOwn) {
  const auto own = qorix::MyPushAdManager::alloc();
  ASSERT_NE(own, nullptr);
  const auto manager = qorix::gtk::start({
      .bundleIdentifier = "com.example.guest",
      .settings = std::make_shared<qorix::MemoryUserDefaults>(),
  });
  EXPECT_EQ(manager, nullptr);
  EXPECT_EQ(own->appBundleIdentifier(), std::nullopt);
  EXPECT_EQ(qorix::platform().mainBundle->bundleIdentifier(), "com.example.guest");
}

// Pages resolve their relative references against its folder.
TEST(GuestTest, theLibrarysBundleIsTheSharedLibrary) {
  qorix::gtk::install({
      .bundleIdentifier = "com.example.guest",
      .settings = std::make_shared<qorix::MemoryUserDefaults>(),
  });
  const auto path = qorix::platform().libraryBundle->executableUrl().filePath();
  ASSERT_TRUE(path.has_value());
  const std::filesystem::path file(*path);
  EXPECT_TRUE(std::filesystem::is_regular_file(file)) << file;
  EXPECT_TRUE(file.filename().string().starts_with("libqorix.so")) << file;
}

/// Casts cross the border of the libraries in both directions.
class GuestsView : public qorix::View {
 public:
  qorix::Rect frame() const override { return {{1, 2}, {3, 4}}; }
  void setFrame(const qorix::Rect& /*frame*/) override {}
  std::shared_ptr<qorix::View> superview() const override { return nullptr; }
  void addSubview(const std::shared_ptr<qorix::View>& /*view*/) override {}
  void removeFromSuperview() override {}
  void setPostsFrameChangedNotifications(bool /*posts*/) override {}
};

TEST(GuestTest, aGuestsOwnViewIsAView) {
  const auto view = std::make_shared<GuestsView>();
  const qorix::Notification notification(
      qorix::kPushAdWillShowNotification, view,
      qorix::Dictionary{{qorix::kPushAdHostViewKey, qorix::Value(view)}});
  EXPECT_TRUE(qorix::MyPushAdUtil::checkEqualsWithHostView(*view, notification));
  const auto event = qorix::MyPushAdEvent::read(notification);
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->hostView, view);
  EXPECT_EQ(event->frame, view->frame());
}

}  // namespace
