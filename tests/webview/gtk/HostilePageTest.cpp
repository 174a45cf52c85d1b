// Hostile pages. The host must continue to work.

#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "webview/gtk/ControllerTest.h"

namespace qorix::test {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace fs = std::filesystem;

class HostilePageTest : public ControllerTest {
 protected:
  /// A page whose list function is `list`, and which records what it receives.
  static std::string pageWithList(const std::string& list) {
    return "<script>var told = 'nothing'; function cocoa_obtain_promo_app_ids() {" + list +
           "} function cocoa_post_promo_app_info(host, ids, flags) {"
           " told = ids.length + ' ' + flags.length; }</script>";
  }

  /// Those of the user's own folders, which lie side by side.
  static std::vector<std::string> filesWith(const std::string& text) {
    std::vector<std::string> found;
    for (const auto& entry :
         fs::recursive_directory_iterator(fs::path(g_get_home_dir()).parent_path())) {
      std::ifstream file(entry.path(), std::ios::binary);
      if (entry.is_regular_file() &&
          std::string(std::istreambuf_iterator<char>(file), {}).find(text) != std::string::npos) {
        found.push_back(entry.path());
      }
    }
    return found;
  }

  static int visibleWindows() {
    const std::unique_ptr<GList, decltype(&g_list_free)> all(gtk_window_list_toplevels(),
                                                             g_list_free);
    int count = 0;
    for (GList* each = all.get(); each != nullptr; each = each->next) {
      count += gtk_widget_get_visible(GTK_WIDGET(each->data)) != FALSE ? 1 : 0;
    }
    return count;
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
  signalWebProcesses(SIGKILL);
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

// Each one waits for the host.
TEST_F(HostilePageTest, dialogsWithoutEndAreAnsweredUnseenAndLeaveTheHostItsTime) {
  host.show();
  const Ticks ticks;
  host.view()->addSubview(controller->view());
  controller->view()->setFrame({{0, 0}, {400, 300}});
  controller->loadDataWithTitle(std::nullopt,
                                "<script>for (let count = 1;; ++count) {"
                                "  alert('a'); prompt('b'); confirm('c');"
                                "  if (count === 100) { navigator.sendBeacon('" +
                                    server.url("/hundred") + "'); } }</script>");
  ASSERT_TRUE(waitFor([&] { return server.requests().size() == 1 && ticks.count > 100; }));
  EXPECT_EQ(visibleWindows(), 1);
  signalWebProcesses(SIGKILL);  // left alone, it keeps a processor busy for ten seconds more
}

TEST_F(HostilePageTest, aFrameFromElsewhereReachesNothingOfThePage) {
  server.setAnswer(
      "/frame",
      {.headers = {{"Content-Type", "text/html"}},
       .body = {"<script>const reached = []; const attempt = (name, act) => {"
                "  try { if (act() !== undefined) { reached.push(name); } } catch (refused) {} };"
                "attempt('document', () => parent.document.title);"
                "attempt('functions', () => parent.cocoa_obtain_promo_app_ids);"
                "attempt('told', () => parent.told);"
                "attempt('messages', () => window.webkit.messageHandlers.qorix);"
                "attempt('files', () => { const request = new XMLHttpRequest();"
                "  request.open('GET', 'file:///etc/hostname', false); request.send();"
                "  return request.responseText; });"
                "parent.postMessage('reached: ' + reached.join(), '*');</script>"}});
  show(pageWithList("return 'com.example.a';") +
       "<script>var heard = ''; addEventListener('message', (event) => { heard = event.data; });"
       "</script><iframe src='" +
       server.url("/frame") + "'></iframe>");
  ASSERT_TRUE(waitFor([&] { return !evaluate("heard").empty(); }));
  EXPECT_EQ(evaluate("heard"), "reached: ");
}

// What was clicked is told by the library's script, in a world of its own.
TEST_F(HostilePageTest, aPageCannotTellOfAClickThatWasNone) {
  server.setAnswer("/next", {.body = {"another page"}});
  show("<a id='a' style='display:block;height:60px' href='" + server.url("/next") +
       "'>x</a><script>const link = document.getElementById('a');"
       "const forge = () => {"
       "  const click = {event: 'click', key: Math.random(), link: link.href, id: 'b',"
       "    className: 'zamopenout', isMainFrame: true, isScripted: false, isSeenToEnd: true,"
       "    isText: false, isHtmlElement: true};"
       "  document.dispatchEvent(new MouseEvent('qorixclick', {relatedTarget: link}));"
       "  document.dispatchEvent(new CustomEvent('message', {detail: click}));"
       "  postMessage(click, '*');"
       "  try { window.webkit.messageHandlers.qorix.postMessage(click); } catch (none) {} };"
       "forge(); for (const name of ['pointerdown', 'mousedown', 'mouseup', 'click']) {"
       "  addEventListener(name, forge, true); link.addEventListener(name, forge); }"
       "</script>");
  EXPECT_EQ(acts(), 0U);
  EXPECT_THAT(announced, IsEmpty());
  click("a");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, IsEmpty());
  EXPECT_EQ(server.requests().size(), 1U);
  EXPECT_THAT(announced, ElementsAre("{(idName is a)}"));
}

TEST_F(HostilePageTest, theUsersClickLetsNoPageReadTheClipboard) {
  gtk_clipboard_set_text(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD), "secret", -1);
  show(
      "<button id='b' style='width:200px;height:80px'>press</button><textarea id='text'></textarea>"
      "<script>var pressed = ''; document.getElementById('b').onclick = () => {"
      "  document.getElementById('text').focus();"
      "  const pasted = document.execCommand('paste');"
      "  const done = (text) => { pressed = pasted + ' ' + text; };"
      "  navigator.clipboard.readText().then(done, () => done('refused')); };</script>");
  click("b");
  ASSERT_TRUE(waitFor([&] { return !evaluate("pressed").empty(); }));
  EXPECT_EQ(evaluate("pressed"), "false refused");
  EXPECT_EQ(evaluate("document.getElementById('text').value"), "");
}

// The user's machine reaches servers that the page's maker does not.
TEST_F(HostilePageTest, aPageReadsNoOtherServersAnswers) {
  server.setAnswer("/inside", {.headers = {{"Content-Type", "text/html"}}, .body = {"secret"}});
  server.setAnswer("/redirected",
                   {.status = 302, .headers = {{"Location", "file:///etc/hostname"}}, .body = {}});
  show(
      "<script>var read = []; var left = 4;"
      "const attempt = (name, get) => get().then((text) => { read.push(name + ' ' + text); },"
      "  () => {}).finally(() => --left);"
      "const inside = '" +
      server.url("/inside") + "'; const redirected = '" + server.url("/redirected") +
      "';"
      "attempt('fetch', () => fetch(inside).then((answer) => answer.text()));"
      "attempt('redirected', () => fetch(redirected).then((answer) => answer.text()));"
      "attempt('request', () => new Promise((done, failed) => {"
      "  const request = new XMLHttpRequest(); request.open('GET', inside);"
      "  request.onload = () => done(request.responseText); request.onerror = failed;"
      "  request.send(); }));"
      "attempt('frame', () => new Promise((done, failed) => {"
      "  const frame = document.createElement('iframe'); frame.src = inside;"
      "  frame.onload = () => { try { done(frame.contentDocument.body.textContent); }"
      "    catch (refused) { failed(); } }; document.body.append(frame); }));"
      "</script>");
  ASSERT_TRUE(waitFor([&] { return evaluate("left") == "0"; }));
  EXPECT_EQ(evaluate("read.join()"), "");
  EXPECT_GE(server.requests().size(), 4U);
}

TEST_F(HostilePageTest, whatAPageStoresIsNotOnTheDisk) {
  server.setAnswer(
      "/store",
      {.headers = {{"Content-Type", "text/html"}, {"Set-Cookie", "left=cookie; Max-Age=9999"}},
       .body = {
           "<title>storing</title><script>const left = 'a-page-left-this';"
           "try { localStorage.setItem('left', left.repeat(1000)); } catch (refused) {}"
           "const end = () => { document.title = 'stored'; };"
           "const open = indexedDB.open('a-page-left-this');"
           "open.onupgradeneeded = () => open.result.createObjectStore('left');"
           "open.onsuccess = () => { const change = open.result.transaction('left', 'readwrite');"
           "  change.objectStore('left').put(left.repeat(100000), 1);"
           "  change.oncomplete = end; change.onabort = end; };"
           "open.onerror = end;</script>"}});
  show("");
  evaluate("location.href = '" + server.url("/store") + "'; 1");
  ASSERT_TRUE(waitForTitle("stored"));
  EXPECT_EQ(evaluate("document.cookie + ' ' + localStorage.length"), "left=cookie 1");
  EXPECT_THAT(filesWith("a-page-left-this"), IsEmpty());
  EXPECT_THAT(filesWith("cookie"), IsEmpty());
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
  signalWebProcesses(SIGKILL);
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
          signalWebProcesses(SIGKILL);
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
