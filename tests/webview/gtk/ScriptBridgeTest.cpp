// What the library and the scripts of real pages say to each other.

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "qorix/MyPushAdManager.h"
#include "webview/gtk/ControllerTest.h"

namespace qorix::test {

namespace {

using ::testing::Contains;

class ScriptBridge : public ControllerTest {
 protected:
  /// A page that keeps each call of its function, and whose list function is `list`.
  static std::string pageWithList(const std::string& list) {
    return "<script>var calls = []; function cocoa_obtain_promo_app_ids() {" + list +
           "} function cocoa_post_promo_app_info(host, ids, flags) {"
           " calls.push(JSON.stringify([host, ids, flags])); }</script>";
  }

  std::string calls() { return evaluate("calls.join(' ')"); }

  static constexpr const char* kCloseControl = "<p id='cocoa_close_web'>Close</p>";
  std::string closeControlDisplay() {
    return evaluate("getComputedStyle(document.getElementById('cocoa_close_web')).display");
  }
};

}  // namespace

TEST_F(ScriptBridge, theInstalledApplicationsReachThePage) {
  const std::filesystem::path entries =
      std::filesystem::path(std::getenv("XDG_DATA_HOME")) / "applications";
  std::filesystem::create_directories(entries);
  std::ofstream(entries / "com.example.viewer.desktop")
      << "[Desktop Entry]\nType=Application\nName=Viewer\nExec=true\n";
  show(
      "<script>var told = '';"
      "function cocoa_obtain_promo_app_ids() { return 'com.example.viewer, com.example.none'; }"
      "function cocoa_post_promo_app_info(host, ids, flags) {"
      " told = host + '|' + ids.join() + '|' + flags.join(); }</script>");
  EXPECT_TRUE(waitFor([&] { return !evaluate("told").empty(); }));
  EXPECT_EQ(evaluate("told"), "|com.example.viewer,com.example.none|1,0");
}

TEST_F(ScriptBridge, aPageWithOneFunctionOnlyIsLeftAlone) {
  show(
      "<script>var asked = 0; function cocoa_obtain_promo_app_ids() { ++asked; return 'a'; }"
      "</script>");
  EXPECT_EQ(evaluate("asked"), "0");
  EXPECT_THAT(log->lines(), Contains("ZAM not support pad filter feature..."));
}

TEST_F(ScriptBridge, aListReturnedAsAnArrayIsEmpty) {
  show(pageWithList("return ['com.a.one', 'com.b.two'];"));
  EXPECT_EQ(calls(), R"(["",[],[]])");
}

TEST_F(ScriptBridge, blanksAndEmptyItemsOfTheListAreDropped) {
  show(pageWithList("return ' com.a.one ,,\\tcom.b.two, ';"));
  EXPECT_EQ(calls(), R"(["",["com.a.one","com.b.two"],["0","0"]])");
}

TEST_F(ScriptBridge, thePageLearnsItsHostsIdentifier) {
  MyPushAdManager::sharedPushAdManager()->configureWithAppBundle(platform().mainBundle);
  show(pageWithList("return '';"));
  EXPECT_EQ(calls(), R"(["com.example.host",[],[]])");
}

TEST_F(ScriptBridge, eachFrameThatHasLoadedRepeatsTheExchange) {
  show(pageWithList("return 'a';") + "<iframe srcdoc='<p>one</p>'></iframe>");
  EXPECT_TRUE(waitFor([&] { return evaluate("calls.length") == "2"; })) << calls();
}

TEST_F(ScriptBridge, aQuoteInAnIdentifierSpoilsTheCallSilently) {
  show(pageWithList("return \"it's\";"));
  EXPECT_EQ(calls(), "");
  EXPECT_EQ(evaluate("document.title"), "loaded");
}

TEST_F(ScriptBridge, inABannerTheCloseControlStays) {
  show(kCloseControl);
  EXPECT_EQ(closeControlDisplay(), "block");
}

TEST_F(ScriptBridge, inThePopupTheCloseControlIsHiddenAfterEachLoad) {
  controller->setPushAdMode(MyPushAdModePopup);
  show(kCloseControl);
  EXPECT_EQ(closeControlDisplay(), "none");
  show(kCloseControl);
  EXPECT_EQ(closeControlDisplay(), "none");
}

}  // namespace qorix::test
