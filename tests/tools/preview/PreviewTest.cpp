#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tools/preview/PreviewFixture.h"

namespace qorix::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class PreviewTest : public PreviewFixture {};

// The window.

TEST_F(PreviewTest, paintsTheBannerAtItsAnchorInTheHostView) {
  write(document({.height = "60"}));
  PreviewProcess preview(arguments());
  const PixelBox ad = waitForColor(kPink, 300, 60);
  const PixelBox window = windowBox("Preview of");
  EXPECT_EQ(window.width, 800);
  EXPECT_EQ(ad.x + ad.width, window.x + window.width) << text(ad) << " in " << text(window);
  EXPECT_EQ(ad.y, window.y + window.height - 600) << "at the top of the view, below the menu";
  EXPECT_EQ(preview.waitForLine("document"),
            "ad 12, version 1a4, banner, top right, 300x60, after 0 s, at most 3 "
            "times");
  EXPECT_EQ(preview.waitForLine("notification"),
            "ZAMPushAdWillShowNotification: banner, ad 12, 300x60 at 500,540");
  EXPECT_TRUE(preview.waitForLine("page"));
  closeWindow(preview);
}

TEST_F(PreviewTest, theBannerFollowsTheWindowsSize) {
  write(document({.embed = "3", .height = "60"}));
  PreviewProcess preview(arguments({"--view-size", "500x300"}));
  expectPainted(kPink, 300, 60);
  EXPECT_EQ(windowBox("Preview of").width, 500);
  for (const char* size : {"900,600", "400,200", "640,480"}) {
    ASSERT_TRUE(run(std::string("wmctrl -r 'Preview of' -e 0,100,100,") + size));
    int width = 0;
    ASSERT_EQ(std::sscanf(size, "%d", &width), 1);
    EXPECT_TRUE(eventually([&] {
      const PixelBox window = windowBox("Preview of");
      const PixelBox ad = boxNow(kPink);
      return window.width == width && ad.width == 300 && ad.height == 60 &&
             ad.x + ad.width == window.x + window.width &&
             ad.y + ad.height == window.y + window.height;
    })) << size;
  }
  closeWindow(preview);
}

TEST_F(PreviewTest, paintsThePopupInTheMiddleOfTheScreen) {
  write(document({.embed = "0", .width = "400", .height = "300"}));
  PreviewProcess preview(arguments());
  const PixelBox ad = waitForColor(kPink, 400, 300);
  EXPECT_EQ(ad.x, (screenWidth() - 400) / 2) << text(ad);
  EXPECT_EQ(ad.y, (screenHeight() - 300) / 2) << text(ad);
  EXPECT_TRUE(preview.waitForText("notification", "WillShowNotification: pop-up, ad 12, 400x300"));
  ASSERT_TRUE(run("wmctrl -c 'Title'"));
  EXPECT_TRUE(preview.waitForText("notification", "DidCloseNotification: pop-up, ad 12"));
  closeWindow(preview);
}

TEST_F(PreviewTest, endsWhenItIsAskedTo) {
  write(document({}));
  PreviewProcess preview(arguments());
  EXPECT_TRUE(preview.waitForLine("page"));
  preview.sendSignal(SIGTERM);
  EXPECT_EQ(preview.exitStatus(), 0);
}

// The host, the user and the machine.

TEST_F(PreviewTest, isTheChosenHost) {
  const std::string later = document({.adid = "13", .height = "60"}, kBluePage);
  const auto begin = later.find("<push_ad>");
  write(document({.height = "60",
                  .table = "<push_ad_config><appid>com.example.viewer</appid><adid>13</adid>"
                           "</push_ad_config>",
                  .laterAds = later.substr(begin, later.rfind("</rootcfg>") - begin)}));
  {
    PreviewProcess viewer(arguments({"--app", "com.example.viewer"}));
    EXPECT_TRUE(viewer.waitForText("ready", "host com.example.viewer,"));
    EXPECT_TRUE(viewer.waitForText("document", "ad 13, "));
    expectPainted(kBlue, 300, 60);
    closeWindow(viewer);
  }
  PreviewProcess any(arguments());
  EXPECT_TRUE(any.waitForText("ready", "host qorix.preview,"));
  EXPECT_TRUE(any.waitForText("document", "ad 12, "));
  expectPainted(kPink, 300, 60);
  closeWindow(any);
}

TEST_F(PreviewTest, aPageIsToldTheHostAndThatNothingIsInstalled) {
  write(document({.height = "60"},
                 "<body style='margin:0'><script>"
                 "function cocoa_obtain_promo_app_ids() { return 'com.a.one'; }"
                 "function cocoa_post_promo_app_info(host, ids, flags) {"
                 " if (host === 'com.example.editor' && flags.join() === '0')"
                 "  document.body.style.background = '#ff00aa'; }</script>"));
  PreviewProcess preview(arguments({"--app", "com.example.editor"}));
  expectPainted(kPink, 300, 60);
  closeWindow(preview);
}

TEST_F(PreviewTest, isInTheChosenLanguage) {
  write(
      makeDocument({.height = "60", .html = entry("default", kBluePage) + entry("de", kPinkPage)}));
  {
    PreviewProcess preview(arguments({"--languages", "de-AT,en"}));
    EXPECT_TRUE(preview.waitForText("ready", "languages de-AT, en,"));
    expectPainted(kPink, 300, 60);
    closeWindow(preview);
  }
  PreviewProcess preview(arguments(), {"LC_ALL=fr_FR.UTF-8"});
  EXPECT_TRUE(preview.waitForText("ready", "languages fr-FR,"));
  expectPainted(kBlue, 300, 60);
}

TEST_F(PreviewTest, spendsNoCountAndWritesNothing) {
  write(document({.height = "60", .count = "1"}));
  const auto folder = std::filesystem::path(std::getenv("HOME")).parent_path();
  const auto before = filesBelow(folder);
  const auto beside = filesBelow(folder_.path());
  for (int i = 0; i < 2; ++i) {
    PreviewProcess preview(arguments({"--app", "com.example.editor"}));
    EXPECT_TRUE(preview.waitForText("notification", "ZAMPushAdWillShowNotification"));
    expectPainted(kPink, 300, 60);
    closeWindow(preview);
  }
  for (const auto& file : filesBelow(folder)) {
    // The toolkit's own caches, and what describes the engine's sandboxes, are no settings.
    EXPECT_TRUE(before.contains(file) || file.find("fontconfig") != std::string::npos ||
                file.find("mesa_shader_cache") != std::string::npos ||
                file.find("bwrapinfo.json") != std::string::npos)
        << file;
  }
  EXPECT_EQ(filesBelow(folder_.path()), beside);
}

// What is not shown.

TEST_F(PreviewTest, tellsWhyAHostWouldNotShowIt) {
  const std::string installed = folder_ / "applications";
  std::filesystem::create_directories(installed);
  std::ofstream(installed + "/Example Viewer.desktop") << "[Desktop Entry]\n";
  const struct {
    DocumentOf document;
    const char* reason;
  } cases[] = {
      {{.enable = "0"}, "it is switched off (enable is 0)"},
      {{.delay = "-1"}, "its delay is negative (-1)"},
      {{.enable = "0", .delay = "-7"},
       "it is switched off (enable is 0); its delay is negative (-7)"},
      {{.others = "<promo_app_name>Example Viewer</promo_app_name>"},
       "all applications that it promotes are installed"},
      {{.enable = "0",
        .others = "<promo_app_name>Example Viewer</promo_app_name>"
                  "<promo_app_name>Example Reader</promo_app_name>"},
       "it is switched off (enable is 0)"},
  };
  for (const auto& each : cases) {
    DocumentOf values = each.document;
    values.height = "60";
    write(document(values));
    PreviewProcess refusing(arguments({"--applications", installed, "--quit-after", "0"}));
    EXPECT_EQ(refusing.exitStatus(), 0);
    EXPECT_THAT(refusing.texts("not shown"), ElementsAre(each.reason));
    EXPECT_THAT(refusing.texts("notification"), IsEmpty());

    PreviewProcess showing(arguments({"--applications", installed, "--anyway"}));
    EXPECT_EQ(showing.waitForLine("shown anyway"), each.reason);
    expectPainted(kPink, 300, 60);
    closeWindow(showing);
  }
}

TEST_F(PreviewTest, nothingCountsAsInstalledUnlessAFolderIsNamed) {
  write(document({.height = "60", .others = "<promo_app_name>Example Viewer</promo_app_name>"}));
  PreviewProcess preview(arguments());
  EXPECT_TRUE(preview.waitForText("ready", "applications none"));
  expectPainted(kPink, 300, 60);
  closeWindow(preview);
  EXPECT_EQ(preview.countLog("fatal error"), 0);
}

TEST_F(PreviewTest, isToldOnceThatTheApplicationsCannotBeRead) {
  write(document({.height = "60", .others = "<promo_app_name>Example Viewer</promo_app_name>"}));
  PreviewProcess preview(arguments({"--applications", folder_ / "nowhere"}));
  expectPainted(kPink, 300, 60);
  closeWindow(preview);
  EXPECT_EQ(preview.countLog("fetchUserInstalledAppNamesSet] 257: "), 1);
}

TEST_F(PreviewTest, whatHasNoPlaceIsNotEvenShownAnyway) {
  write(document({.embed = "-1"}));
  PreviewProcess preview(arguments({"--anyway", "--quit-after", "0"}));
  EXPECT_EQ(preview.exitStatus(), 0);
  EXPECT_THAT(preview.texts("not shown"),
              ElementsAre("it is neither a banner nor a pop-up (embed is -1)"));
}

TEST_F(PreviewTest, tellsWhyThereIsNothingToSee) {
  write(makeDocument({.height = "0", .html = "<de>nur deutsch</de>"}));
  PreviewProcess preview(arguments({"--languages", "en", "--quit-after", "1"}));
  EXPECT_EQ(preview.exitStatus(), 0);
  EXPECT_THAT(
      preview.texts("empty"),
      ElementsAre("the banner has no size (300x0); there is no page in the user's language"));
}

TEST_F(PreviewTest, waitsForTheDelayUnlessShownAnyway) {
  write(document({.height = "60", .delay = "1000"}));
  PreviewProcess waiting(arguments({"--quit-after", "1"}));
  EXPECT_EQ(waiting.exitStatus(), 0);
  EXPECT_THAT(waiting.texts("waiting"), ElementsAre("the advertisement comes after 1000 s"));
  EXPECT_THAT(waiting.texts("notification"), IsEmpty());
  PreviewProcess showing(arguments({"--anyway"}));
  expectPainted(kPink, 300, 60);
  closeWindow(showing);
}

TEST_F(PreviewTest, tellsWhyADocumentIsRefusedAndWaitsForABetterOne) {
  write("<rootcfg>\n<data></datum></rootcfg>");
  PreviewProcess preview(arguments());
  const auto refused = preview.waitForLine("refused");
  ASSERT_TRUE(refused);
  EXPECT_THAT(*refused, AllOf(StartsWith(file_ + ":2:"), HasSubstr("not well-formed XML"),
                              HasSubstr("+[MyPushAdUtil parseXMLWithString:] 91: "),
                              HasSubstr("waiting for " + file_ + " to change")));
  EXPECT_EQ(preview.countLog("parseXMLWithString:] 91: "), 1);
  write(document({.height = "60"}));
  expectPainted(kPink, 300, 60);
  closeWindow(preview);
}

TEST_F(PreviewTest, aDocumentThatIsStillRefusedInTheEndIsAFailure) {
  write("<rootcfg>");
  PreviewProcess preview(arguments({"--quit-after", "0"}));
  EXPECT_EQ(preview.exitStatus(), 1);
}

// Clicks.

TEST_F(PreviewTest, tellsEachDecisionWithItsReasonAndWhatComesOfIt) {
  const std::string block = "style='display:block;float:left;width:60px;height:60px'";
  write(document({.height = "60"},
                 "<body style='margin:0;background:#ff00aa'>"
                 "<a " +
                     block +
                     " id='store' href='https://a.example/?ls=1'></a>"
                     "<a " +
                     block +
                     " class='zamopenout' href='https://a.example/more'></a>"
                     "<a " +
                     block +
                     " id='buy' href='https://a.example/?zamopeniap=1&amp;item=2'></a>"
                     "<a " +
                     block +
                     " id='plain' href='#here'></a>"
                     "<a " +
                     block + " id='cocoa_close_web' href='https://a.example/close'></a>"));
  PreviewProcess preview(arguments());
  const PixelBox ad = waitForColor(kPink, 300, 60);
  ASSERT_EQ(ad.width, 300);
  ASSERT_TRUE(preview.waitForLine("page"));
  for (int i = 0; i < 5; ++i) {
    clickAt(ad.x + 60 * i + 30, ad.y + 30);
    // The load of the page is the first decision, its showing the first notification.
    ASSERT_TRUE(preview.waitForLine("decision", i + 2)) << i;
    ASSERT_TRUE(preview.waitForText("notification", i == 1 ? "class" : "Triggering")) << i;
  }
  EXPECT_TRUE(preview.waitForText("notification", "cocoa_close_web"));
  EXPECT_TRUE(preview.waitForText("notification", "DidClose"));
  expectPainted(kPink, 0, 0);
  const auto decisions = preview.texts("decision");
  ASSERT_EQ(decisions.size(), 6U);
  EXPECT_THAT(decisions[0], AllOf(StartsWith("use (load) file:///"),
                                  HasSubstr(" - let through: only link clicks are looked at")));
  EXPECT_EQ(decisions[1],
            "ignore (link click) https://a.example/?ls=1 - opens the App Store: the query holds "
            "ls=1");
  EXPECT_EQ(decisions[2],
            "ignore (link click) https://a.example/more - opens the browser: the clicked "
            "element's class holds zamopenout");
  EXPECT_EQ(decisions[3],
            "ignore (link click) https://a.example/?zamopeniap=1&item=2 - asks the host for the "
            "purchase: the query holds zamopeniap=1");
  EXPECT_THAT(decisions[4],
              AllOf(StartsWith("use (link click) file:///"), HasSubstr("#here - followed inside "),
                    HasSubstr("id \"plain\", class none")));
  EXPECT_EQ(decisions[5],
            "ignore (link click) https://a.example/close - closes the banner: the clicked element "
            "has the id cocoa_close_web");
  EXPECT_THAT(preview.texts("open"),
              ElementsAre("macappstore://a.example/?ls=1 (only printed: no --open)",
                          "https://a.example/more (only printed: no --open)"));
  const auto notifications = preview.texts("notification");
  constexpr const char* kPurchase =
      "ZAMPushAdOpenIAPNotification: banner, ad 12, 300x60 at 500,540, address "
      "https://a.example/?zamopeniap=1&item=2";
  for (const char* expected :
       {"ZAMPushAdIsTriggeringNavigationNotification: element {(idName is store)}",
        "ZAMPushAdIsTriggeringNavigationNotification: element {(className is zamopenout)}",
        "ZAMPushAdIsTriggeringNavigationNotification: element {(idName is buy)}", kPurchase,
        "ZAMPushAdIsTriggeringNavigationNotification: element {(idName is plain)}",
        "ZAMPushAdIsTriggeringNavigationNotification: element {(idName is cocoa_close_web)}"}) {
    EXPECT_THAT(notifications, ::testing::Contains(expected));
  }
  EXPECT_EQ(notifications.size(), 8U);
  closeWindow(preview);
}

TEST_F(PreviewTest, tellsOfMarksThatAScriptHasSetOrMissed) {
  const std::string block = "style='display:block;float:left;width:100px;height:60px'";
  write(document({.height = "60"},
                 "<body style='margin:0;background:#ff00aa'><a id='a' " + block +
                     " href='https://a.example/'></a><a id='b' " + block +
                     " href='#b'></a><a id='c' " + block +
                     " href='#c'></a><script>a.href += '?tools=12'; b.className = 'zamopenout';"
                     "c.className = 'ZamOpenOut';</script>"));
  PreviewProcess preview(arguments());
  const PixelBox ad = waitForColor(kPink, 300, 60);
  ASSERT_EQ(ad.width, 300);
  ASSERT_TRUE(preview.waitForLine("page"));
  for (int i = 0; i < 3; ++i) {
    clickAt(ad.x + 100 * i + 50, ad.y + 30);
    ASSERT_TRUE(preview.waitForLine("decision", i + 2)) << i;
  }
  const auto decisions = preview.texts("decision");
  EXPECT_THAT(decisions[1], HasSubstr("opens the App Store: the query holds ls=1 (in tools=12)"));
  EXPECT_THAT(decisions[2], HasSubstr("opens the browser: the clicked element's class holds "
                                      "zamopenout"));
  EXPECT_THAT(decisions[3], AllOf(HasSubstr("followed inside the ad: no mark was found"),
                                  HasSubstr("marks in a class are in small letters")));
  closeWindow(preview);
}

TEST_F(PreviewTest, tellsThatALinkIntoANewWindowDoesNothing) {
  write(document({.height = "60"},
                 "<body style='margin:0;background:#ff00aa'><a target='_blank' "
                 "href='https://a.example/?ls=1' style='display:block;height:100vh'></a>"));
  PreviewProcess preview(arguments());
  const PixelBox ad = waitForColor(kPink, 300, 60);
  ASSERT_TRUE(preview.waitForLine("page"));
  clickAt(ad.x + 150, ad.y + 30);
  EXPECT_TRUE(
      preview.waitForText("decision", "none (new window) https://a.example/?ls=1 - does nothing"));
  closeWindow(preview);
  EXPECT_THAT(preview.texts("open"), IsEmpty());
}

TEST_F(PreviewTest, opensLinksWhenToldTo) {
  const std::string arrivals = folder_ / "arrivals";
  const std::filesystem::path applications =
      std::filesystem::path(std::getenv("XDG_DATA_HOME")) / "applications";
  std::filesystem::create_directories(applications);
  const auto program = applications / "open.sh";
  std::ofstream(program) << "#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" << arrivals << "'\n";
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  std::ofstream(applications / "open.desktop")
      << "[Desktop Entry]\nType=Application\nName=Open\nExec=" << program.string()
      << " %u\nMimeType=x-scheme-handler/https;\n";
  std::ofstream(std::filesystem::path(std::getenv("XDG_CONFIG_HOME")) / "mimeapps.list")
      << "[Default Applications]\nx-scheme-handler/https=open.desktop\n";
  write(document({.height = "60"},
                 "<body style='margin:0;background:#ff00aa'><a class='zamopenout' "
                 "href='https://a.example/more' style='display:block;height:100vh'></a>"));
  PreviewProcess preview(arguments({"--open"}));
  const PixelBox ad = waitForColor(kPink, 300, 60);
  ASSERT_TRUE(preview.waitForLine("page"));
  clickAt(ad.x + 150, ad.y + 30);
  EXPECT_EQ(preview.waitForLine("open"), "https://a.example/more");
  EXPECT_TRUE(eventually([&] {
    std::ifstream file(arrivals);
    return std::string(std::istreambuf_iterator<char>(file), {}) == "https://a.example/more\n";
  }));
  closeWindow(preview);
}

// Other versions of the file.

TEST_F(PreviewTest, showsTheNewVersionWhetherWrittenInPlaceOrReplaced) {
  write(document({.height = "60"}));
  PreviewProcess preview(arguments());
  expectPainted(kPink, 300, 60);
  ASSERT_TRUE(run("wmctrl -r 'Preview of' -e 0,150,120,700,450"));
  EXPECT_TRUE(eventually([] { return windowBox("Preview of").width == 700; }));
  const PixelBox place = windowBox("Preview of");
  replace(document({.height = "60"}, kBluePage));
  expectPainted(kBlue, 300, 60);
  EXPECT_EQ(text(windowBox("Preview of")), text(place));
  write(document({.height = "60"}));
  expectPainted(kPink, 300, 60);
  EXPECT_EQ(text(windowBox("Preview of")), text(place));
  replace(document({.embed = "0", .width = "400", .height = "300"}, kBluePage));
  expectPainted(kBlue, 400, 300);
  write(document({.embed = "0", .width = "200", .height = "150"}));
  expectPainted(kPink, 200, 150);
  replace(document({.embed = "5", .height = "60"}, kBluePage));
  expectPainted(kBlue, 300, 60);
  expectPainted(kPink, 0, 0);
  EXPECT_EQ(text(windowBox("Preview of")), text(place));
  EXPECT_TRUE(preview.waitForLine("reload", 5));
  EXPECT_TRUE(eventually([&] {  // what the earlier runs have started is gone
    return std::ranges::none_of(childrenOf(preview.process()), hasEnded);
  }));
  closeWindow(preview);
}

TEST_F(PreviewTest, keepsWhatIsShownWhileTheFileIsBroken) {
  const std::string good = document({.height = "60"});
  write(good);
  PreviewProcess preview(arguments());
  expectPainted(kPink, 300, 60);
  write(good.substr(0, good.size() / 2));
  const auto refused = preview.waitForLine("refused");
  ASSERT_TRUE(refused);
  EXPECT_THAT(*refused, AllOf(HasSubstr("parseXMLWithString:] 91: "),
                              HasSubstr("; what is on screen stays")));
  EXPECT_TRUE(preview.waitForLog("go to pre-defined condition."));
  std::filesystem::remove(file_);
  EXPECT_TRUE(preview.waitForText("unreadable", "No such file"));
  expectPainted(kPink, 300, 60);
  write(good);
  EXPECT_TRUE(preview.waitForText("unchanged", "holds again what is shown"));
  EXPECT_THAT(preview.texts("reload"), IsEmpty());
  replace(document({.height = "60"}, kBluePage));
  expectPainted(kBlue, 300, 60);
  closeWindow(preview);
}

TEST_F(PreviewTest, followsAFileBehindALink) {
  const std::string link = folder_ / "link.xml";
  std::filesystem::create_directories(folder_ / "elsewhere");
  const std::string real = folder_ / "elsewhere/ad.xml";
  std::ofstream(real) << document({.height = "60"});
  std::filesystem::create_symlink(real, link);
  PreviewProcess preview({link});
  expectPainted(kPink, 300, 60);
  std::ofstream(real) << document({.height = "60"}, kBluePage);
  expectPainted(kBlue, 300, 60);
  closeWindow(preview);
}

TEST_F(PreviewTest, theTimeToQuitStaysTheSameWhenTheFileChanges) {
  write(document({.height = "60"}));
  const auto begin = std::chrono::steady_clock::now();
  PreviewProcess preview(arguments({"--quit-after", "20"}));
  EXPECT_TRUE(preview.waitForLine("page"));
  replace(document({.height = "60"}, kBluePage));
  EXPECT_TRUE(preview.waitForLine("page", 2));
  EXPECT_EQ(preview.exitStatus(), 0);
  const auto took = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(took, std::chrono::seconds(20));
  EXPECT_LT(took, std::chrono::seconds(40)) << "twice the time: it began again";
}

}  // namespace
}  // namespace qorix::test
