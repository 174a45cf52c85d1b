// Hostile pages. The host must continue to work.

#include <gmock/gmock.h>

#include "webview/gtk/ControllerTest.h"

namespace qorix::test {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class HostilePageTest : public ControllerTest {
 protected:
  /// A page whose list function is `list`, and which records what it receives.
  static std::string pageWithList(const std::string& list) {
    return "<script>var told = 'nothing'; function cocoa_obtain_promo_app_ids() {" + list +
           "} function cocoa_post_promo_app_info(host, ids, flags) {"
           " told = ids.length + ' ' + flags.length; }</script>";
  }

  /// Counts how often the host's loop gets its turn.
  class Ticks {
   public:
    // Of low priority: it must not keep the toolkit from drawing.
    Ticks() : timer_(g_timeout_add_full(G_PRIORITY_LOW, 20, tick, &count, nullptr)) {}
    ~Ticks() { g_source_remove(timer_); }
    Ticks(const Ticks&) = delete;
    Ticks& operator=(const Ticks&) = delete;
    int count = 0;

   private:
    static gboolean tick(gpointer count) {
      ++*static_cast<int*>(count);
      return G_SOURCE_CONTINUE;
    }
    guint timer_;
  };
};

}  // namespace

TEST_F(HostilePageTest, aListThatNeverEndsIsGivenUpWhileTheHostIsServed) {
  host.show();
  const Ticks ticks;
  host.view()->addSubview(controller->view());
  controller->view()->setFrame({{0, 0}, {400, 300}});
  controller->loadDataWithTitle(std::nullopt,
                                "<body style='background:#f00'>" + pageWithList("for (;;) {}"));
  // The exchange starts when the page has loaded. From then on its script does not respond.
  ASSERT_TRUE(waitFor([&] { return evaluate("'awake'") == "awake"; }));
  ASSERT_TRUE(waitFor([&] { return evaluate("'awake'").empty(); }));
  EXPECT_GT(ticks.count, 20);
}

TEST_F(HostilePageTest, aListThatThrowsIsAnEmptyOne) {
  show(pageWithList("throw new Error('no');"));
  EXPECT_EQ(evaluate("told"), "0 0");
}

TEST_F(HostilePageTest, aListOfMegabytesIsLoggedAndTakenAsEmpty) {
  show(pageWithList("return 'com.example.a,'.repeat(500000);"));
  EXPECT_EQ(evaluate("told"), "0 0");
  EXPECT_THAT(log->lines(), Contains(HasSubstr("list of applications is too long")));
}

TEST_F(HostilePageTest, redefinedMethodsOfTheDocumentHideNoClick) {
  show(
      "<a id='a' class='zamopenout' href='https://example.com/' "
      "style='display:block;height:60px;font:30px monospace'>More</a><script>"
      "addEventListener('load', () => { for (const name of ['caretRangeFromPoint', "
      "'createRange', 'elementFromPoint', 'addEventListener']) "
      "{ document[name] = () => { throw new Error('mine'); }; } "
      "Node.prototype.contains = () => false; Element.prototype.getAttribute = () => 'other'; "
      "window.webkit = null; window.setTimeout = () => 0; document.title = 'loaded'; });"
      "</script>");
  click("a", 10, 20);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/"));
  EXPECT_THAT(announced, ElementsAre("{(idName is a)(className is zamopenout)}"));
}

TEST_F(HostilePageTest, aPageMayNavigateWhileItIsAsked) {
  server.setAnswer("/next", {.headers = {{"Content-Type", "text/html"}},
                             .body = {"<title>next</title>", "<p>another page</p>"}});
  host.show();
  host.view()->addSubview(controller->view());
  controller->loadDataWithTitle(
      std::nullopt,
      "<title>first</title>" +
          pageWithList("location.href = '" + server.url("/next") + "'; return 'com.example.a';"));
  EXPECT_TRUE(waitForTitle("next"));
}

TEST_F(HostilePageTest, dialogsOpenedWhileItIsAskedDoNotStopTheExchange) {
  show(pageWithList("alert('a'); confirm('b'); prompt('c'); return 'com.example.a';"));
  EXPECT_EQ(evaluate("told"), "1 1");
}

TEST_F(HostilePageTest, whatNeedsPermissionIsRefused) {
  show(
      "<script>var answers = [];"
      "navigator.geolocation.getCurrentPosition(() => answers.push('place'),"
      " () => answers.push('no place'));"
      "const media = navigator.mediaDevices;"
      "(media ? media.getUserMedia({video: true, audio: true}) : Promise.reject())"
      " .then(() => answers.push('camera'), () => answers.push('no camera'));"
      "(window.Notification ? Notification.requestPermission() : Promise.resolve('denied'))"
      " .then((answer) => answers.push('notifications ' + answer));</script>");
  ASSERT_TRUE(waitFor([&] { return evaluate("answers.length") == "3"; }));
  EXPECT_EQ(evaluate("answers.sort().join()"), "no camera,no place,notifications denied");
}

TEST_F(HostilePageTest, beingAskedIsNoActOfTheUser) {
  GtkClipboard* clipboard = gtk_clipboard_get(GDK_SELECTION_CLIPBOARD);
  gtk_clipboard_set_text(clipboard, "the user's", -1);
  show(
      "<input id='text' value='of the page'><input id='date' type='date'>"
      "<input id='color' type='color'><input id='file' type='file'><script>"
      "var gains = []; var asked = {}; var pending = 0;"
      "function tryAll(where) {"
      "  asked[where] = true;"
      "  const gain = (what) => gains.push(what + ' in ' + where);"
      "  if (navigator.userActivation && navigator.userActivation.isActive) { gain('act'); }"
      "  document.getElementById('text').select();"
      "  if (document.execCommand('copy')) { gain('copy'); }"
      "  if (document.execCommand('cut')) { gain('cut'); }"
      "  ++pending; const done = () => --pending;"
      "  navigator.clipboard.writeText('of the page').then(() => { gain('write'); done(); }, done);"
      "  for (const id of ['date', 'color', 'file']) {"
      "    try { document.getElementById(id).showPicker(); gain(id); } catch (refused) {}"
      "  }"
      "  if (window.open('https://example.com/')) { gain('window'); }"
      "}"
      "for (const name of ['cocoa_obtain_promo_app_ids', 'cocoa_post_promo_app_info']) {"
      "  Object.defineProperty(window, name, { get() { tryAll('getter of ' + name);"
      "    return () => { tryAll(name); return ''; }; } });"
      "}</script>");
  ASSERT_TRUE(waitFor([&] { return evaluate("Object.keys(asked).length") == "4"; }));
  ASSERT_TRUE(waitFor([&] { return evaluate("pending") == "0"; }));
  EXPECT_EQ(evaluate("gains.join()"), "");
  const std::unique_ptr<char, decltype(&g_free)> text(gtk_clipboard_wait_for_text(clipboard),
                                                      g_free);
  EXPECT_STREQ(text.get(), "the user's");
  EXPECT_EQ(gtk_grab_get_current(), nullptr);
}

TEST_F(HostilePageTest, aPageThatClosesItselfStays) {
  show("<script>window.close(); self.close(); top.close();</script><p id='p'>here</p>");
  EXPECT_EQ(evaluate("document.getElementById('p').textContent"), "here");
}

TEST_F(HostilePageTest, aCrashedWebProcessIsOneLogLineAndABlankBanner) {
  show("<body style='background:#f00'>");
  log->takeLines();
  killWebProcesses();
  ASSERT_TRUE(waitFor([&] { return !log->lines().empty(); }));
  settle();
  EXPECT_THAT(log->lines(), ElementsAre("ZAM Ad page's web process ended: crashed"));
  EXPECT_EQ(evaluate("1 + 1"), "");
  controller->loadDataWithTitle(std::nullopt, "<title>again</title>");
  EXPECT_TRUE(waitForTitle("again")) << "a later page is shown";
}

// On a busy machine the engine may notice the death late; waiting would take the limit each time.
TEST_F(HostilePageTest, aWebProcessThatDiesWhileItIsAskedIsNotWaitedFor) {
  bool isWaitedFor = true;
  for (int attempt = 0; attempt < 10 && isWaitedFor; ++attempt) {
    show("<p>short life</p>");
    g_timeout_add(
        10,
        [](gpointer) -> gboolean {
          killWebProcesses();
          return G_SOURCE_REMOVE;
        },
        nullptr);
    const gint64 start = g_get_monotonic_time();
    EXPECT_EQ(evaluate("for (;;) {}"), "");
    isWaitedFor = static_cast<double>(g_get_monotonic_time() - start) >= kScriptTimeLimit * 1e6;
    EXPECT_EQ(evaluate("1 + 1"), "");
  }
  EXPECT_FALSE(isWaitedFor);
}

}  // namespace qorix::test
