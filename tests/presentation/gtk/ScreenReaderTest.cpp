// What a screen reader finds, through the desktop's own bus for assistive technology.

#include <gmock/gmock.h>

#include <qorix/MyPushAdOperator.h>

#include "fakes/FakeWorkspace.h"
#include "support/Records.h"
#include "support/gtk/GtkTest.h"
#include "support/gtk/ScreenReader.h"

namespace qorix::test {

namespace {

using ::testing::ElementsAre;

class ScreenReaderTest : public GtkTest {
 protected:
  ScreenReaderTest() {
    Platform services = platform();
    services.workspace = workspace;
    installPlatform(services);
    host.show();
  }

  void show(RecordOf values, const std::string& title) {
    values.version = "";  // due every time
    const auto record = makeRecord(values);
    record->setTitleDict(LocalizedTexts{{"default", title}});
    record->setHtmlContentsDict(LocalizedTexts{
        {"default",
         "<!DOCTYPE html><body><a class='zamopenout' href='https://example.com/'>Read more</a>"
         "<a href='https://example.com/close' id='cocoa_close_web' aria-label='Close'></a>"}});
    presenter = MyPushAdOperator::createInstanceWithHostView(host.view());
    presenter->processShowAdIfNeededWithPushAdInfo(record);
  }

  HostWindow host{400, 300};
  std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
  std::shared_ptr<MyPushAdOperator> presenter;
  const ScreenReader reader;
};

}  // namespace

TEST_F(ScreenReaderTest, findsTheBannerInItsHostAndTheLinksInIt) {
  show({.embed = 1}, "The viewer");
  const Accessible window = reader.find(Role::frame, "Host");
  const Accessible banner = reader.find(Role::panel, "The viewer", window);
  EXPECT_EQ(reader.description(banner), "Advertisement");
  reader.find(Role::link, "Close", banner);
  const Accessible more = reader.find(Role::link, "Read more", banner);
  reader.activate(more);
  ASSERT_TRUE(waitFor([&] { return !workspace->opened.empty(); }));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/"));
}

TEST_F(ScreenReaderTest, movesTheKeyboardIntoTheBannerForItsUser) {
  show({.embed = 1}, "The viewer");
  reader.focus(reader.find(Role::link, "Read more"));
  ASSERT_TRUE(waitFor([&] { return gtk_window_get_focus(host.window()) != nullptr; }));
  run({"xdotool", "key", "Return"});
  ASSERT_TRUE(waitFor([&] { return !workspace->opened.empty(); }));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/"));
}

TEST_F(ScreenReaderTest, callsABannerWithoutATitleAnAdvertisement) {
  show({.embed = 1}, "");
  const Accessible banner =
      reader.find(Role::panel, "Advertisement", reader.find(Role::frame, "Host"));
  reader.find(Role::link, "Read more", banner);
}

TEST_F(ScreenReaderTest, findsThePopupByItsTitleAndTheLinksInIt) {
  show({.embed = 0}, "The converter");
  const Accessible popup = reader.find(Role::dialog, "The converter");
  reader.find(Role::link, "Read more", reader.find(Role::panel, "Advertisement", popup));
}

TEST_F(ScreenReaderTest, callsAPopupWithoutATitleAnAdvertisement) {
  show({.embed = 0}, "");
  reader.find(Role::link, "Read more", reader.find(Role::dialog, "Advertisement"));
}

}  // namespace qorix::test
