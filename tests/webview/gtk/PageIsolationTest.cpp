// What the pages of advertisements cannot do to the user and the host.

#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <utility>

#include "platform/gtk/FileFilter.h"
#include "platform/gtk/PageIsolation.h"
#include "platform/gtk/PageWatchdog.h"
#include "support/TemporaryFolder.h"
#include "webview/OpeningLimit.h"
#include "webview/gtk/ControllerTest.h"

namespace qorix::test {

namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

namespace fs = std::filesystem;

class PageIsolationTest : public ControllerTest {
 protected:
  /// Files of all kinds that a page can load.
  static void writeFiles(const fs::path& folder, const std::string& name) {
    std::ofstream(folder / (name + ".js")) << "window.ran = true;";
    std::ofstream(folder / (name + ".mjs")) << "export default 1;";
    std::ofstream(folder / (name + ".css")) << "body { margin-top: 1px }";
    std::ofstream(folder / (name + ".svg"))
        << "<svg xmlns='http://www.w3.org/2000/svg' width='33' height='22'></svg>";
    std::ofstream(folder / (name + ".html")) << "<script>parent.postMessage('shown', '*')</script>";
    for (const auto& font : fs::recursive_directory_iterator("/usr/share/fonts")) {
      if (font.path().extension() == ".ttf") {
        fs::copy_file(font.path(), folder / (name + ".ttf"), fs::copy_options::overwrite_existing);
        break;
      }
    }
  }

  /// Tries everything that loads from `address`, which lacks the file's ending only; answers what
  /// was loaded, separated by blanks.
  std::string loadedFrom(const std::string& address) {
    const std::string tries =
        "var ran = false; var loaded = []; var left = 8; const at = '" + address +
        "';"
        "const done = (name, isLoaded) => { if (isLoaded) { loaded.push(name); } --left; };"
        "const add = (tag, name, property, ending, more) => {"
        "  const element = Object.assign(document.createElement(tag), more || {});"
        "  element.onload = () => done(name, true); element.onerror = () => done(name, false);"
        "  element[property] = at + ending; document.body.append(element); };"
        "add('script', 'script', 'src', '.js'); add('img', 'image', 'src', '.svg');"
        "add('link', 'style', 'href', '.css', { rel: 'stylesheet' });"
        "new FontFace('face', 'url(\"' + at + '.ttf\")').load()"
        "  .then(() => done('font', true), () => done('font', false));"
        "import(at + '.mjs').then(() => done('module', true), () => done('module', false));"
        "fetch(at + '.js').then(() => done('fetch', true), () => done('fetch', false));"
        "try { const worker = new Worker(at + '.js'); worker.onerror = () => done('worker', "
        "false); }"
        "catch (error) { done('worker', false); }"
        "{ const request = new XMLHttpRequest(); request.open('GET', at + '.js');"
        "  request.onload = () => done('request', true);"
        "  request.onerror = () => done('request', false);"
        "  try { request.send(); } catch (error) { done('request', false); } } 1";
    evaluate(tries);
    EXPECT_TRUE(waitFor([&] { return evaluate("left") == "0"; })) << evaluate("left");
    return evaluate("loaded.sort().join(' ')");
  }

  static fs::path libraryFolder() {
    return fs::path(*platform().libraryBundle->executableUrl().filePath()).parent_path();
  }
};

gboolean countPress(GtkWidget* /*widget*/, GdkEvent* /*event*/, gpointer count) {
  ++*static_cast<int*>(count);
  return FALSE;
}

/// The names of files beside the library, which go with the object.
class FilesBesideLibrary {
 public:
  explicit FilesBesideLibrary(const fs::path& folder) : folder_(folder) {}
  ~FilesBesideLibrary() {
    for (const char* ending : {".js", ".mjs", ".css", ".svg", ".html", ".ttf"}) {
      std::error_code error;
      fs::remove(folder_ / (name() + ending), error);
    }
  }
  FilesBesideLibrary(const FilesBesideLibrary&) = delete;
  FilesBesideLibrary& operator=(const FilesBesideLibrary&) = delete;
  std::string name() const { return "qorix-isolation-" + std::to_string(getpid()); }

 private:
  const fs::path folder_;
};

}  // namespace

TEST_F(PageIsolationTest, noFileOutsideOfTheLibrarysFolderIsLoaded) {
  const TemporaryFolder outside;
  writeFiles(outside.path(), "file");
  show("<p>first page</p>");
  EXPECT_EQ(loadedFrom(Url::fileUrl((outside.path() / "file").string()).absoluteString()), "");
  EXPECT_EQ(evaluate("String(ran)"), "false");
}

TEST_F(PageIsolationTest, theFirstPageOfAProcessIsCovered) {
  const TemporaryFolder outside;
  writeFiles(outside.path(), "file");
  const std::string address = Url::fileUrl((outside.path() / "file").string()).absoluteString();
  show("<script>var outcome = ''</script><script src='" + address +
       ".js' onload='outcome += \"ran \"' onerror='outcome += \"refused\"'></script>");
  EXPECT_EQ(evaluate("outcome"), "refused");
}

TEST_F(PageIsolationTest, filesOutsideAreNeitherShownInFramesNorInPlaceOfThePage) {
  const TemporaryFolder outside;
  writeFiles(outside.path(), "file");
  const std::string address = Url::fileUrl((outside.path() / "file").string()).absoluteString();
  show(
      "<script>var heard = ''; onmessage = (event) => heard += event.data;</script>"
      "<a id='a' href='" +
      address +
      ".html' style='display:block;height:50px'></a>"
      "<iframe src='" +
      address + ".html'></iframe><object data='" + address +
      ".html'></object>"
      "<embed src='" +
      address + ".html'>");
  click("a");
  settle();
  settle();
  EXPECT_EQ(evaluate("heard"), "");
  EXPECT_EQ(evaluate("document.title"), "loaded");
}

TEST_F(PageIsolationTest, bareNamesOfTheLibrarysFolderAreLoaded) {
  const FilesBesideLibrary files(libraryFolder());
  writeFiles(libraryFolder(), files.name());
  show(
      "<script>var heard = ''; onmessage = (event) => heard += event.data;</script>"
      "<iframe src='" +
      files.name() + ".html'></iframe>");
  EXPECT_EQ(loadedFrom(files.name()), "font image script style");
  EXPECT_EQ(evaluate("heard"), "shown");
}

TEST_F(PageIsolationTest, noWayLeadsOutOfTheLibrarysFolder) {
  const TemporaryFolder outside;
  writeFiles(outside.path(), "file");
  const std::string path = (outside.path() / "file").string();
  std::string up;
  std::string upEscaped;
  for (const auto& each : libraryFolder().relative_path()) {
    static_cast<void>(each);
    up += "../";
    upEscaped += "..%2F";
  }
  std::string escaped = path.substr(1);
  for (auto slash = escaped.find('/'); slash != std::string::npos; slash = escaped.find('/')) {
    escaped.replace(slash, 1, "%2f");
  }
  show("<p>page</p>");
  for (const std::string& address :
       {up + path.substr(1), upEscaped + path.substr(1), upEscaped + escaped,
        "FILE://localhost" + path, "file:///" + path}) {
    EXPECT_EQ(loadedFrom(address), "") << address;
  }
}

TEST_F(PageIsolationTest, theRulesHoldForAnyFolder) {
  const std::string rules = gtk::fileRules(Url::fileUrl("/opt/a.b (c)+/lib/libqorix.so"));
  EXPECT_THAT(rules, HasSubstr(R"("^file:///opt/a\\.b%20%28c%29%2B/lib/[^/]+$")"));
  EXPECT_EQ(gtk::fileRules(Url::fileUrl("/opt/a.b (c)+/bin/../lib/libqorix.so")), rules);
}

TEST_F(PageIsolationTest, aFilterThatCannotBeMadeLeavesPagesWithoutFiles) {
  setenv("TMPDIR", "/nowhere/at/all", 1);
  const FilesBesideLibrary files(libraryFolder());
  writeFiles(libraryFolder(), files.name());
  show("<p>page</p>");
  EXPECT_THAT(log->lines(), Contains(HasSubstr("ZAM Ad pages are shown without local files: ")));
  EXPECT_EQ(evaluate("document.baseURI"), "about:blank");
  EXPECT_EQ(loadedFrom(Url::fileUrl((libraryFolder() / files.name()).string()).absoluteString()),
            "");
}

TEST_F(PageIsolationTest, aPageCannotRefuseToBeLeftByALink) {
  server.setAnswer("/next",
                   {.headers = {{"Content-Type", "text/html"}}, .body = {"<title>next</title>"}});
  show("<a id='a' href='" + server.url("/next") +
       "' style='display:block;height:50px'></a>"
       "<script>addEventListener('beforeunload', (event) => {"
       " event.preventDefault(); event.returnValue = 'stay'; return 'stay'; });</script>");
  click("a");
  EXPECT_TRUE(waitForTitle("next"));
  EXPECT_THAT(announced, ElementsAre("{(idName is a)}"));
}

TEST_F(PageIsolationTest, aPageCannotRefuseToBeReplaced) {
  show(
      "<p id='p' style='height:50px'>page</p><script>var clicks = 0;"
      "addEventListener('click', () => ++clicks); addEventListener('beforeunload', (event) => {"
      " event.preventDefault(); event.returnValue = 'stay'; return 'stay'; });</script>");
  click("p");
  ASSERT_TRUE(waitFor([&] { return evaluate("clicks") == "1"; }));
  controller->loadDataWithTitle(std::nullopt, "<title>replaced</title>");
  EXPECT_TRUE(waitForTitle("replaced"));
}

TEST_F(PageIsolationTest, aPageThatNeverAnswersIsEndedAndReplaced) {
  show("<script>setTimeout(() => { for (;;) {} }, 200)</script>");
  ASSERT_TRUE(waitFor([&] { return evaluate("'awake'").empty(); }));
  log->takeLines();
  controller->loadDataWithTitle(std::nullopt, "<title>replaced</title>");
  ASSERT_TRUE(waitFor([&] { return !log->lines().empty(); }, 10 * gtk::PageWatchdog::kTimeLimit));
  EXPECT_EQ(log->takeLines().at(0), "ZAM Ad page's web process ended: no answer for 10 seconds");
  EXPECT_TRUE(waitForTitle("replaced"));
  EXPECT_THAT(log->lines(), Not(Contains(HasSubstr("ended"))));
}

TEST_F(PageIsolationTest, aPageThatIsBusyForAWhileIsLetBe) {
  show(
      "<script>setTimeout(() => { const end = Date.now() + 7000; while (Date.now() < end) {}"
      " document.title = 'done'; }, 200)</script>");
  EXPECT_TRUE(waitForTitle("done"));
  EXPECT_THAT(log->lines(), Not(Contains(HasSubstr("ended"))));
}

TEST_F(PageIsolationTest, aPageThatIsUsedAfterARestIsEndedSooner) {
  const auto page = [this](const std::string& color) {
    return "<div style='position:fixed; inset:0; background:" + color +
           "'></div><script>setTimeout(() => { new Image().src = '" + server.url("/hasRested") +
           "'; }, 36000)</script>";
  };
  show(page("#ff0000"));
  const auto unused = std::exchange(controller, newController());
  show(page("blue"));
  const auto clicked = std::exchange(controller, newController());
  show(page("blue"));
  unused->view()->setFrame({{0, 0}, {100, 300}});
  clicked->view()->setFrame({{100, 0}, {100, 300}});
  controller->view()->setFrame({{200, 0}, {200, 300}});
  ASSERT_TRUE(waitFor([this] { return server.requests().size() == 3; }, 200));
  log->takeLines();
  signalWebProcesses(SIGSTOP);
  const GdkRectangle place = host.overlayOnScreen();
  clickOn(place.x + 150, place.y + 150);
  evaluate("1");
  EXPECT_TRUE(waitFor([this] { return log->lines().size() == 2; }, 200));
  EXPECT_THAT(log->lines(), Each(HasSubstr("no answer for 10 seconds")));
  EXPECT_TRUE(waitFor([] { return placeOf(kBlue).width == 0; })) << "both are ended";
  EXPECT_EQ(placeOf(kRed).width, 100);
  signalWebProcesses(SIGKILL);
}

TEST_F(PageIsolationTest, aBannerWithoutAPageLetsThePointerThrough) {
  int presses = 0;
  GtkWidget* behind = gtk_bin_get_child(GTK_BIN(host.overlay()));
  gtk_widget_add_events(behind, GDK_BUTTON_PRESS_MASK);
  g_signal_connect(behind, "button-press-event", G_CALLBACK(countPress), &presses);
  show("<p>page</p><script>var clicks = 0; addEventListener('click', () => ++clicks);</script>");
  const auto press = [&] {
    const GdkRectangle place = host.overlayOnScreen();
    run({"xdotool", "mousemove", std::to_string(place.x + 200), std::to_string(place.y + 150),
         "click", "1"});
  };
  press();
  ASSERT_TRUE(waitFor([&] { return evaluate("clicks") == "1"; }));
  EXPECT_EQ(presses, 0);
  log->takeLines();
  signalWebProcesses(SIGKILL);
  ASSERT_TRUE(waitFor([&] { return !log->lines().empty(); }));
  EXPECT_THAT(log->lines(), SizeIs(1));
  gtk_widget_show_all(GTK_WIDGET(host.window()));  // as hosts may at any time
  settle();
  press();
  EXPECT_TRUE(waitFor([&] { return presses > 0; }));
  EXPECT_EQ(controller->view()->frame(), (Rect{{0, 0}, {400, 300}})) << "it keeps its place";
  show("<p>again</p><script>var clicks = 0; addEventListener('click', () => ++clicks);</script>");
  presses = 0;
  press();
  EXPECT_TRUE(waitFor([&] { return evaluate("clicks") == "1"; })) << "the next page takes it";
  EXPECT_EQ(presses, 0);
}

TEST_F(PageIsolationTest, anEndedPageDoesNothingMoreWithoutAWord) {
  show("<script>setInterval(() => fetch('" + server.url("/alive") +
       "', { mode: 'no-cors' }), 20)</script>");
  ASSERT_TRUE(waitFor([&] { return server.requests().size() >= 3; }));
  log->takeLines();
  controller->view()->removeFromSuperview();
  controller->endPage();
  EXPECT_TRUE(waitFor([&] { return webProcesses().empty(); }));
  settle();  // what was on its way
  const std::size_t requests = server.requests().size();
  settle();
  settle();
  EXPECT_EQ(server.requests().size(), requests);
  EXPECT_THAT(log->lines(), IsEmpty());
  controller->view()->setFrame({{7, 8}, {90, 60}});
  EXPECT_EQ(controller->view()->frame(), (Rect{{7, 8}, {90, 60}}));
}

TEST_F(PageIsolationTest, aPageLoadedAfterTheEndStays) {
  show("<p>page</p>");
  controller->endPage();
  show("<p>another</p>");
  settle();
  EXPECT_EQ(evaluate("document.title"), "loaded");
}

TEST_F(PageIsolationTest, onePagesEndIsNotAnothers) {
  show("<p>page</p>");
  Page other;
  other.loadAndWait("<p>other</p>");
  controller->endPage();
  EXPECT_TRUE(waitFor([&] { return webProcesses().size() == 1; }));
  EXPECT_EQ(other.evaluate("1 + 1"), "2");
}

TEST_F(PageIsolationTest, aPageOfTooMuchMemoryIsEndedWithTheReason) {
  show("<p>page</p>");
  log->takeLines();
  evaluate(
      "var kept = []; setInterval(() => { const more = new Uint8Array(64 << 20);"
      " more.fill(7); kept.push(more); }, 10); 1");
  ASSERT_TRUE(waitFor([&] { return !log->lines().empty(); }));
  EXPECT_THAT(log->lines(), ElementsAre("ZAM Ad page's web process ended: it used more than " +
                                        std::to_string(gtk::kPageMemoryLimit) + " MB of memory"));
}

TEST_F(PageIsolationTest, pagesRunInASandboxOrTheLogSaysWhyNot) {
  show("<p>page</p>");
  ASSERT_THAT(webProcesses(), SizeIs(1));
  const auto namespaceOf = [](const std::string& process) {
    return fs::read_symlink("/proc/" + process + "/ns/mnt");
  };
  const bool isApart = namespaceOf("self") != namespaceOf(std::to_string(webProcesses().front()));
  EXPECT_NE(isApart, testing::Value(log->lines(), Contains(HasSubstr("without a sandbox"))));
}

TEST_F(PageIsolationTest, withoutTheToolsOfTheSandboxPagesAreShownAllTheSame) {
  setenv("PATH", "/nowhere/at/all", 1);
  controller->view();
  controller->loadDataWithTitle(std::nullopt, "<title>loaded</title>");
  EXPECT_TRUE(waitForTitle("loaded"));
  EXPECT_THAT(log->lines(),
              Contains("ZAM Ad pages run without a sandbox: this system cannot make one"));
}

TEST_F(PageIsolationTest, aFrameThatClicksInALoopIsStopped) {
  show(
      "<iframe srcdoc=\"<a id='a' href='https://example.com/?zamopenout=1'>x</a><script>"
      "setInterval(() => { document.getElementById('a').click(); top.clicks = ++window.n || (n = "
      "1);"
      " }, 20);</script>\"></iframe>");
  ASSERT_TRUE(waitFor([&] { return announced.size() > 100; }));
  EXPECT_GE(workspace->opened.size(), 1U);
  EXPECT_LE(workspace->opened.size(), OpeningLimit::kPerPage);
  const auto lines = log->lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(),
                       "ZAM Ad page opens too many addresses without the user"),
            1);
}

TEST_F(PageIsolationTest, theUsersClicksOpenWithoutLimit) {
  show("<a id='a' href='https://example.com/?zamopenout=1' style='display:block;height:50px'></a>");
  for (std::size_t i = 1; i <= 2 * OpeningLimit::kPerPage; ++i) {
    click("a");
    ASSERT_TRUE(waitFor([&] { return workspace->opened.size() == i; })) << i;
  }
  EXPECT_THAT(log->lines(), Not(Contains(HasSubstr("too many"))));
}

TEST_F(PageIsolationTest, oneClickOfTheUserIsNoLeaveForMore) {
  show(
      "<a id='a' href='https://example.com/?zamopenout=1' style='display:block;height:50px'></a>"
      "<p id='p' style='height:50px'></p><script>"
      "document.getElementById('p').addEventListener('click', () => setInterval("
      "() => document.getElementById('a').click(), 10));</script>");
  click("p");
  ASSERT_TRUE(waitFor([&] { return announced.size() > 50; }));
  EXPECT_LE(workspace->opened.size(), OpeningLimit::kPerPage + 1);
}

}  // namespace qorix::test
