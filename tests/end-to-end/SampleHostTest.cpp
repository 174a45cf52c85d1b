#include "support/SampleHostTest.h"

#include <chrono>
#include <fstream>
#include <random>

#include "support/CheckLines.h"

namespace qorix::test {
namespace {

using ::testing::ElementsAre;

TEST_F(SampleHostTest, showsTheBannerOfAFetchedDocument) {
  serve({.embed = "1", .width = "300", .height = "60"});
  HostProcess host(arguments());
  EXPECT_TRUE(host.waitForEvent("ready"));
  const auto event = host.waitForEvent(kWillShow);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->dump(), (nlohmann::json{{"event", kWillShow},
                                           {"hostView", 0},
                                           {"popup", false},
                                           {"adId", 12},
                                           {"frame", {500, 440, 300, 60}},
                                           {"url", nullptr},
                                           {"element", nullptr}}
                                .dump()));
  const auto box = waitForColor(kAdColor, 300, 60);
  EXPECT_EQ(box.width, 300);
  EXPECT_EQ(box.height, 60);
  EXPECT_THAT(host.log(), ElementsAre("ZAM dSuccess", "ZAM dadstring is saved."));
  expectProperQuit(host);
  ASSERT_EQ(server_.requests().size(), 1U);
  EXPECT_EQ(server_.requests()[0].method, "GET");
}

TEST_F(SampleHostTest, showsThePopupInTheMiddleOfTheScreen) {
  serve({.embed = "0", .width = "400", .height = "300"});
  HostProcess host(arguments());
  const auto event = host.waitForEvent(kWillShow);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->at("popup"), true);
  const auto box = waitForColor(kAdColor, 400, 300);
  EXPECT_EQ(box.width, 400);
  EXPECT_EQ(box.height, 300);
  const auto frame = event->at("frame");
  EXPECT_EQ(frame.at(0), box.x);
  EXPECT_EQ(frame.at(1), screenHeight() - box.y - box.height);
  EXPECT_EQ(box.x, (screenWidth() - 400) / 2);
  EXPECT_EQ(box.y, (screenHeight() - 300) / 2);
  expectProperQuit(host);
}

TEST_F(SampleHostTest, aHostWithoutAViewShowsThePopup) {
  serve({.embed = "0", .width = "400", .height = "300"});
  HostProcess host(arguments({"--host-views", "0"}));
  const auto event = host.waitForEvent(kWillShow);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->at("hostView"), nullptr);
  EXPECT_EQ(waitForColor(kAdColor, 400, 300).width, 400);
  expectProperQuit(host);
}

TEST_F(SampleHostTest, theCachedDocumentIsShownAtOnceWithoutAServer) {
  serve({.width = "300", .height = "60"});
  EXPECT_TRUE(isShownInOneLaunch());
  RawServer refusing([](RawServer::Connection& /*connection*/) {});
  HostProcess host({"--url", refusing.url("/"), "--defaults", settings_});
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  EXPECT_TRUE(host.waitForLog("ZAM dError rty"));
  EXPECT_EQ(waitForColor(kAdColor, 300, 60).width, 300);
  expectProperQuit(host);
}

TEST_F(SampleHostTest, aVersionIsShownAsOftenAsItsCountAcrossLaunches) {
  serve({.count = "2"});
  EXPECT_TRUE(isShownInOneLaunch());
  EXPECT_TRUE(isShownInOneLaunch());
  EXPECT_FALSE(isShownInOneLaunch(3));
  EXPECT_EQ(storedCount(), 2);
}

TEST_F(SampleHostTest, twoHostViewsSpendOneCount) {
  serve({.count = "1"});
  HostProcess host(arguments({"--host-views", "2", "--view-size", "500x300"}));
  const auto event = host.waitForEvent(kWillShow);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->at("hostView"), 0);
  expectProperQuit(host);
  EXPECT_EQ(host.countEvents(kWillShow), 1);
}

TEST_F(SampleHostTest, anErrorPageIsATextThatDoesNotParse) {
  server_.setAnswer(kPath, {.status = 404, .body = {"<html><body>not found</body></html>"}});
  HostProcess host(arguments());
  EXPECT_TRUE(host.waitForLog("ZAM OK. but rty"));
  expectProperQuit(host);
  EXPECT_THAT(
      host.log(),
      ElementsAre(
          "ZAM dSuccess", checkLine("+[MyPushAdUtil parseXMLWithString:]", 94, kFatalMessage),
          checkLine("-[MyPushAdManager downloadSuccessfullyWithString:]", 256, kFatalMessage),
          "ZAM OK. but rty"));
}

TEST_F(SampleHostTest, aServerThatStallsHoldsNothingUp) {
  server_.setAnswer(kPath, {.body = {"<rootcfg>"}, .ending = LoopbackServer::Ending::stall});
  HostProcess host(arguments());
  EXPECT_TRUE(host.waitForEvent("ready"));
  EXPECT_TRUE(server_.waitForRequests(1, std::chrono::seconds(30)));
  expectProperQuit(host);
  EXPECT_THAT(host.log(), IsEmpty());
}

TEST_F(SampleHostTest, damagedSettingsAreKeptAsideAndTheHostGoesOn) {
  std::ofstream(settings_) << "this is no database, and nothing else either";
  serve({.width = "300", .height = "60"});
  HostProcess host(arguments());
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  EXPECT_TRUE(host.waitForLog("ZAM dadstring is saved."));
  expectProperQuit(host);
  EXPECT_EQ(host.countLog(settings_), 1) << "one line that names the file";
  EXPECT_EQ(storedCount(), 1);
  bool isKept = false;
  for (const auto& file : std::filesystem::directory_iterator(folder_)) {
    std::ifstream stream(file.path());
    std::string first;
    std::getline(stream, first);
    isKept = isKept || first == "this is no database, and nothing else either";
  }
  EXPECT_TRUE(isKept);
}

TEST_F(SampleHostTest, thePageIsInTheUsersLanguage) {
  server_.setAnswer(kPath,
                    {.body = {makeDocument({.width = "300",
                                            .height = "60",
                                            .html = "<default>default</default><de><![CDATA[" +
                                                    std::string(kPlainPage) + "]]></de>"})}});
  HostProcess host(arguments({"--languages", "de-AT,en-US"}));
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  EXPECT_EQ(waitForColor(kAdColor, 300, 60).width, 300);
  expectProperQuit(host);
}

TEST_F(SampleHostTest, aHostIsKnownByItsBundleIdentifier) {
  serve({.table = tableLine("com.example.viewer", "99")});
  HostProcess other(arguments({"--bundle-id", "com.example.viewer"}));
  EXPECT_TRUE(other.waitForLog("ZAM OK. but rty")) << "its line names no advertisement";
  expectProperQuit(other);
  HostProcess editor(arguments());
  EXPECT_TRUE(editor.waitForEvent(kWillShow));
  expectProperQuit(editor);
}

TEST_F(SampleHostTest, whatIsPromotedIsLookedForInTheApplicationsFolder) {
  serve({.others = "<promo_app_name>Example Viewer</promo_app_name>"});
  {
    std::ofstream(folder_ / "Example Viewer.desktop") << "[Desktop Entry]\n";
    HostProcess host(arguments());
    EXPECT_TRUE(host.waitForLog("ZAM Disabled."));
    EXPECT_EQ(host.countLog("ZAM: All po-apps installed, Disable it."), 1);
    expectProperQuit(host);
  }
  std::filesystem::remove(folder_ / "Example Viewer.desktop");
  HostProcess host(arguments());
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  expectProperQuit(host);
}

TEST_F(SampleHostTest, quitsByItselfAndSavesAPictureOfTheScreen) {
  serve({.width = "300", .height = "60"});
  const std::string file = (folder_ / "picture.png").string();
  HostProcess host(arguments({"--quit-after", "4", "--screenshot", file}));
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_TRUE(WIFEXITED(host.status()) && WEXITSTATUS(host.status()) == 0);
  EXPECT_EQ(host.events().back().at("event"), "quit");
  const auto picture = readPicture(file);
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(picture->width(), screenWidth());
  EXPECT_EQ(picture->height(), screenHeight());
  EXPECT_EQ(picture->boxOf(kAdColor).width, 300);
}

TEST_F(SampleHostTest, clicksAreToldWithTheirAddressAndElement) {
  serve({.width = "300", .height = "60"},
        "<body style='margin:0'><a id='buy' class='zamopeniap' href='https://example.com/?a=1' "
        "style='display:block;height:100vh;background:#ff00aa'></a>");
  HostProcess host(arguments());
  const PixelBox box = waitForColor(kAdColor, 300, 60);
  ASSERT_EQ(box.width, 300);
  clickAt(box.x + 150, box.y + 30);
  const auto purchase = host.waitForEvent("ZAMPushAdOpenIAPNotification");
  ASSERT_TRUE(purchase);
  EXPECT_EQ(*purchase, (nlohmann::json{{"event", "ZAMPushAdOpenIAPNotification"},
                                       {"hostView", 0},
                                       {"popup", false},
                                       {"adId", 12},
                                       {"frame", {500, 440, 300, 60}},
                                       {"url", "https://example.com/?a=1"},
                                       {"element", nullptr}}));
  const auto click = host.waitForEvent("ZAMPushAdIsTriggeringNavigationNotification");
  ASSERT_TRUE(click);
  EXPECT_EQ(*click, (nlohmann::json{{"event", "ZAMPushAdIsTriggeringNavigationNotification"},
                                    {"hostView", nullptr},
                                    {"popup", false},
                                    {"adId", nullptr},
                                    {"frame", nullptr},
                                    {"url", nullptr},
                                    {"element", "{(idName is buy)(className is zamopeniap)}"}}));
  expectProperQuit(host);
}

TEST_F(SampleHostTest, aClickInThePopupIsTold) {
  serve({.embed = "0", .width = "400", .height = "300"},
        "<body style='margin:0'><a class='zamopeniap' href='https://example.com/?a=1' "
        "style='display:block;height:100vh;background:#ff00aa'></a>");
  HostProcess host(arguments());
  const PixelBox box = waitForColor(kAdColor, 400, 300);
  ASSERT_EQ(box.width, 400);
  ASSERT_EQ(box.height, 300);
  clickAt(box.x + 200, box.y + 150);
  const auto purchase = host.waitForEvent("ZAMPushAdOpenIAPNotification");
  ASSERT_TRUE(purchase);
  EXPECT_EQ(purchase->at("popup"), true);
  EXPECT_EQ(purchase->at("url"), "https://example.com/?a=1");
  expectProperQuit(host);
}

// The host quits in every state of an advertisement.

TEST_F(SampleHostTest, quitsWhileAShowingIsScheduled) {
  serve({.delay = "60"});
  HostProcess host(arguments());
  EXPECT_TRUE(host.waitForLog("ZAM dadstring is saved."));
  expectProperQuit(host);
  EXPECT_EQ(host.countEvents(kWillShow), 0);
}

TEST_F(SampleHostTest, quitsWhileThePageIsLoading) {
  for (const char* embed : {"1", "0"}) {
    serve({.version = std::string("v") + embed, .embed = embed});
    HostProcess host(arguments());
    EXPECT_TRUE(host.waitForEvent(kWillShow));
    expectProperQuit(host);
  }
}

TEST_F(SampleHostTest, quitsWhileAScriptOfThePageRuns) {
  // The page reports to the server that it was called, and then never returns.
  serve({}, std::string(kPlainPage) +
                "<script>function cocoa_obtain_promo_app_ids() {"
                " var request = new XMLHttpRequest(); request.open('GET', '" +
                server_.url("/asked") +
                "', false); try { request.send(); } catch (e) {} for (;;) {} }"
                "function cocoa_post_promo_app_info() {}</script>");
  HostProcess host(arguments());
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  ASSERT_TRUE(server_.waitForRequests(2, std::chrono::seconds(30)));
  EXPECT_EQ(server_.requests()[1].target, "/asked");
  expectProperQuit(host);
}

TEST_F(SampleHostTest, quitsAfterTheUserHasClosedTheBanner) {
  serve({.width = "300", .height = "60"},
        "<body style='margin:0'><a id='cocoa_close_web' href='https://ads.example.com/close' "
        "style='display:block;height:100vh;background:#ff00aa'></a>");
  HostProcess host(arguments());
  EXPECT_TRUE(host.waitForEvent(kWillShow));
  const PixelBox box = waitForColor(kAdColor, 300, 60);
  ASSERT_EQ(box.width, 300);
  clickAt(box.x + 150, box.y + 30);
  const auto closed = host.waitForEvent("ZAMPushAdDidCloseNotification");
  ASSERT_TRUE(closed);
  EXPECT_EQ(closed->at("hostView"), 0);
  EXPECT_EQ(waitForColor(kAdColor, 0, 0).width, 0);
  expectProperQuit(host);
  EXPECT_EQ(host.countEvents("ZAMPushAdIsTriggeringNavigationNotification"), 1);
}

}  // namespace
}  // namespace qorix::test
