#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "docs/Guide.h"
#include "platform/linux/UserFolders.h"
#include "support/SampleHostTest.h"
#include "support/Wait.h"

namespace qorix::test {
namespace {

namespace fs = std::filesystem;

// What the pages of the example paint, found nowhere else on the screen.
constexpr Pixel kBanner{0x23, 0x4E, 0x70};
constexpr Pixel kStoreLink{0xFF, 0xD1, 0x66};
constexpr Pixel kBrowserLink{0x8E, 0xCA, 0xE6};
constexpr Pixel kPurchaseLink{0xA7, 0xC9, 0x57};
constexpr Pixel kCloseControl{0xEF, 0x47, 0x6F};
constexpr Pixel kPopup{0xED, 0xF6, 0xF9};

/// The guide's complete example, fetched and shown by the real host. What it opens is written down.
class GuideOnScreenTest : public SampleHostTest {
 protected:
  GuideOnScreenTest() {
    server_.setAnswer(kPath, {.body = {Guide().block("example")}});
    fs::create_directories(applications_);
    const auto program = applications_ / "open.sh";
    std::ofstream(program) << "#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" << opened_.string() << "'\n";
    fs::permissions(program, fs::perms::owner_all);
    fs::create_directories(userConfigurationFolder());
    openSchemes({"https", "macappstore"});
  }

  /// The desktop has an application for these schemes and for no other.
  void openSchemes(const std::vector<std::string>& schemes) const {
    std::ofstream entry(applications_ / "open.desktop");
    entry << "[Desktop Entry]\nType=Application\nName=Open\nExec="
          << (applications_ / "open.sh").string() << " %u\nMimeType=";
    std::ofstream defaults(fs::path(userConfigurationFolder()) / "mimeapps.list");
    defaults << "[Default Applications]\n";
    for (const auto& scheme : schemes) {
      entry << "x-scheme-handler/" << scheme << ";";
      defaults << "x-scheme-handler/" << scheme << "=open.desktop\n";
    }
    entry << "\n";
  }

  std::vector<std::string> hostArguments(const std::string& identifier) const {
    return arguments({"--bundle-id", identifier, "--view-size", "800x300", "--languages", "de-AT"});
  }

  static PixelBox boxOf(const Pixel& color) {
    return takePicture(std::getenv("DISPLAY"))->boxOf(color);
  }

  /// Clicks in the middle of what has that colour, once it is there.
  static void clickOn(const Pixel& color) {
    PixelBox box;
    ASSERT_TRUE(waitUntil([&] { return (box = boxOf(color)).width > 0; }, kPatience));
    clickAt(box.x + box.width / 2, box.y + box.height / 2);
  }

  bool waitForOpened(const std::string& addresses) const {
    return waitUntil([&] { return textOfFile(opened_.string()) == addresses; }, kPatience);
  }

  const fs::path applications_ = fs::path(userDataFolder()) / "applications";
  const fs::path opened_ = fs::path(userDataFolder()) / "opened";
};

TEST_F(GuideOnScreenTest, theEditorPaintsTheBannerAndEachLinkActs) {
  HostProcess host(hostArguments("com.example.editor"));
  const auto shown = host.waitForEvent(kWillShow);
  ASSERT_TRUE(shown);
  EXPECT_EQ(shown->at("frame"), nlohmann::json({160, 198, 640, 90}));
  const auto banner = waitForColor(kBanner, 640, 90);
  EXPECT_EQ(banner.width, 640);
  EXPECT_EQ(banner.height, 90);

  const std::string inStore = "macappstore://apps.example.com/viewer?ls=1\n";
  clickOn(kStoreLink);
  EXPECT_TRUE(waitForOpened(inStore));
  clickOn(kBrowserLink);
  EXPECT_TRUE(waitForOpened(inStore + "https://www.example.com/viewer?zamopenout=1\n"));
  clickOn(kPurchaseLink);
  const auto purchase = host.waitForEvent("ZAMPushAdOpenIAPNotification");
  ASSERT_TRUE(purchase);
  EXPECT_EQ(purchase->at("url"), "https://www.example.com/viewer/buy");
  clickOn(kCloseControl);
  EXPECT_TRUE(host.waitForEvent("ZAMPushAdDidCloseNotification"));
  EXPECT_EQ(waitForColor(kBanner, 0, 0).width, 0);
  expectProperQuit(host);
  EXPECT_EQ(storedCount(), 1);
}

TEST_F(GuideOnScreenTest, theStoresLinkDoesNothingWhereNoApplicationOpensIt) {
  openSchemes({"https"});
  HostProcess host(hostArguments("com.example.editor"));
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  EXPECT_EQ(waitForColor(kBanner, 640, 90).width, 640);
  clickOn(kStoreLink);
  EXPECT_TRUE(host.waitForEvent("ZAMPushAdIsTriggeringNavigationNotification"));
  clickOn(kBrowserLink);
  EXPECT_TRUE(waitForOpened("https://www.example.com/viewer?zamopenout=1\n"));
  EXPECT_EQ(boxOf(kBanner).width, 640);
  expectProperQuit(host);
}

TEST_F(GuideOnScreenTest, whereTheViewerIsInstalledTheStoresLinkIsHidden) {
  std::ofstream(applications_ / "com.example.viewer.desktop")
      << "[Desktop Entry]\nType=Application\nName=Viewer\nExec=true\n";
  HostProcess host(hostArguments("com.example.editor"));
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  EXPECT_EQ(waitForColor(kBanner, 640, 90).width, 640);
  EXPECT_EQ(waitForColor(kStoreLink, 0, 0).width, 0);
  EXPECT_GT(boxOf(kBrowserLink).width, 0);
  expectProperQuit(host);
}

TEST_F(GuideOnScreenTest, anyOtherHostPaintsThePopup) {
  HostProcess host(hostArguments("com.example.player"));
  const auto shown = host.waitForEvent(kWillShow);
  ASSERT_TRUE(shown);
  EXPECT_EQ(shown->at("popup"), true);
  EXPECT_EQ(waitForColor(kPopup, 480, 240).width, 480);
  expectProperQuit(host);
}

}  // namespace
}  // namespace qorix::test
