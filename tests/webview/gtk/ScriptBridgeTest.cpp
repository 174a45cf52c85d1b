// What the library and the scripts of real pages say to each other.

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

#include <qorix/MyPushAdManager.h>

#include "support/TemporaryFolder.h"
#include "webview/gtk/ControllerTest.h"

namespace qorix::test {

namespace {

using ::testing::Contains;
using ::testing::Not;

class ScriptBridgeTest : public ControllerTest {
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

constexpr const char* kBusyFunction =
    "<script>function busy() { const end = Date.now() + 8000; while (Date.now() < end) {} }"
    "</script>";
constexpr const char* kUnsupported = "ZAM not support pad filter feature...";

}  // namespace

TEST_F(ScriptBridgeTest, theInstalledApplicationsReachThePage) {
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

TEST_F(ScriptBridgeTest, applicationsForAllUsersAreInstalledToo) {
  const TemporaryFolder allUsers;
  const std::filesystem::path entries = allUsers.path() / "applications";
  std::filesystem::create_directories(entries);
  std::ofstream(entries / "com.example.painter.desktop")
      << "[Desktop Entry]\nType=Application\nName=Painter\nExec=true\n";
  setenv("XDG_DATA_DIRS", ("/nowhere/at/all:" + allUsers.path().string()).c_str(), 1);
  show(pageWithList("return 'com.example.painter,com.example.none';"));
  EXPECT_EQ(calls(), R"(["",["com.example.painter","com.example.none"],["1","0"]])");
}

TEST_F(ScriptBridgeTest, aPageWithOneFunctionOnlyIsLeftAlone) {
  show(
      "<script>var asked = 0; function cocoa_obtain_promo_app_ids() { ++asked; return 'a'; }"
      "</script>");
  EXPECT_EQ(evaluate("asked"), "0");
  EXPECT_THAT(log->lines(), Contains("ZAM not support pad filter feature..."));
}

TEST_F(ScriptBridgeTest, aListReturnedAsAnArrayIsEmpty) {
  show(pageWithList("return ['com.a.one', 'com.b.two'];"));
  EXPECT_EQ(calls(), R"(["",[],[]])");
}

TEST_F(ScriptBridgeTest, blanksAndEmptyItemsOfTheListAreDropped) {
  show(pageWithList("return ' com.a.one ,,\\tcom.b.two, ';"));
  EXPECT_EQ(calls(), R"(["",["com.a.one","com.b.two"],["0","0"]])");
}

TEST_F(ScriptBridgeTest, thePageLearnsItsHostsIdentifier) {
  MyPushAdManager::sharedPushAdManager()->configureWithAppBundle(platform().mainBundle);
  show(pageWithList("return '';"));
  EXPECT_EQ(calls(), R"(["com.example.host",[],[]])");
}

TEST_F(ScriptBridgeTest, eachFrameThatHasLoadedRepeatsTheExchange) {
  show(pageWithList("return 'a';") + "<iframe srcdoc='<p>one</p>'></iframe>");
  EXPECT_TRUE(waitFor([&] { return evaluate("calls.length") == "2"; })) << calls();
}

TEST_F(ScriptBridgeTest, aQuoteInAnIdentifierSpoilsTheCallSilently) {
  show(pageWithList("return \"it's\";"));
  EXPECT_EQ(calls(), "");
  EXPECT_EQ(evaluate("document.title"), "loaded");
}

TEST_F(ScriptBridgeTest, inABannerTheCloseControlStays) {
  show(kCloseControl);
  EXPECT_EQ(closeControlDisplay(), "block");
}

TEST_F(ScriptBridgeTest, inThePopupTheCloseControlIsHiddenAfterEachLoad) {
  controller->setPushAdMode(MyPushAdModePopup);
  show(kCloseControl);
  EXPECT_EQ(closeControlDisplay(), "none");
  show(kCloseControl);
  EXPECT_EQ(closeControlDisplay(), "none");
}

TEST_F(ScriptBridgeTest, aListThatTakesTooLongIsEmptyAndTheRestFollowsWhenThePageIsBack) {
  controller->setPushAdMode(MyPushAdModePopup);
  show(kCloseControl + std::string(kBusyFunction) + pageWithList("busy(); return 'a';"));
  EXPECT_TRUE(waitFor([&] { return calls() == R"(["",[],[]])"; })) << calls();
  EXPECT_TRUE(waitFor([&] { return closeControlDisplay() == "none"; }));
}

TEST_F(ScriptBridgeTest, aPageThatIsBusyAfterItsLoadIsAskedWhenItIsBack) {
  controller->setPushAdMode(MyPushAdModePopup);
  show(kCloseControl + std::string(kBusyFunction) + pageWithList("return 'a';") +
       "<script>addEventListener('load', () => setTimeout(busy, 0));</script>");
  EXPECT_TRUE(waitFor([&] { return calls() == R"(["",["a"],["0"]])"; })) << calls();
  EXPECT_TRUE(waitFor([&] { return closeControlDisplay() == "none"; }));
  EXPECT_THAT(log->lines(), Not(Contains(kUnsupported)));
}

TEST_F(ScriptBridgeTest, aPageThatIsTooSlowToSayWhetherItTakesPartIsAskedAgain) {
  show(kBusyFunction +
       std::string("<script>var calls = []; var times = 0;"
                   "Object.defineProperty(window, 'cocoa_obtain_promo_app_ids', { get() {"
                   "  if (++times === 1) { busy(); } return () => 'a'; } });"
                   "function cocoa_post_promo_app_info(host, ids, flags) {"
                   " calls.push(JSON.stringify([host, ids, flags])); }</script>"));
  EXPECT_TRUE(waitFor([&] { return calls() == R"(["",["a"],["0"]])"; })) << calls();
  EXPECT_THAT(log->lines(), Not(Contains(kUnsupported)));
}

TEST_F(ScriptBridgeTest, aPageLoadedAfterADeadLinkGetsItsExchange) {
  show("<a id='dead' href='https://127.0.0.1:1/'>dead</a>");
  evaluate("document.getElementById('dead').click()");
  settle();
  show(pageWithList("return 'a';"));
  EXPECT_TRUE(waitFor([&] { return calls() == R"(["",["a"],["0"]])"; })) << calls();
}

TEST_F(ScriptBridgeTest, aDialogOfTheHostDuringTheExchangeFreezesNothing) {
  GtkWidget* dialog = gtk_message_dialog_new(host.window(), GTK_DIALOG_MODAL, GTK_MESSAGE_INFO,
                                             GTK_BUTTONS_OK, "Wait");
  struct Seen {
    GtkWidget* dialog;
    int tasks = 0;
    bool wasOpened = false;
    void take() {
      if (++tasks == 2) {
        gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_OK);
      }
    }
  } seen{dialog};
  // Asked for its list, the page gives the host a second in which it opens the dialog.
  const auto onTitle = +[](GObject*, GParamSpec*, gpointer data) {
    auto* all = static_cast<Seen*>(data);
    if (std::exchange(all->wasOpened, true)) {
      return;
    }
    platform().mainRunLoop->performAfterDelay(0, [all] { all->take(); });
    platform().mainRunLoop->dispatchAsync([all] { all->take(); });
    gtk_dialog_run(GTK_DIALOG(all->dialog));
  };
  host.show();
  host.view()->addSubview(controller->view());
  GList* children = gtk_container_get_children(GTK_CONTAINER(host.overlay()));
  GtkWidget* engine = gtk_bin_get_child(GTK_BIN(g_list_last(children)->data));
  g_list_free(children);
  g_signal_connect(engine, "notify::title", G_CALLBACK(onTitle), &seen);
  controller->loadDataWithTitle(
      std::nullopt, pageWithList("document.title = 'asked'; const end = Date.now() + 1000;"
                                 " while (Date.now() < end) {} return 'a';"));
  EXPECT_TRUE(waitFor([&] { return calls() == R"(["",["a"],["0"]])"; })) << calls();
  EXPECT_EQ(seen.tasks, 2);
  gtk_widget_destroy(dialog);
}

}  // namespace qorix::test
