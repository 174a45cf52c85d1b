#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <webkit2/webkit2.h>

#include <filesystem>
#include <fstream>

#include "platform/gtk/WebKitView.h"
#include "platform/gtk/WebProcessModule.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

class WebViewTest : public GtkTest {
 protected:
  // Shows the page in a host, so that it can be clicked.
  void showAndLoad(const std::string& html) {
    host.show();
    page.showIn(host, {{0, 0}, {400, 300}});
    page.loadAndWait(html);
  }

  // Clicks at a point of the page, y downwards.
  void clickAt(int x, int y) {
    const GdkRectangle place = host.overlayOnScreen();
    run({"xdotool", "mousemove", std::to_string(place.x + x), std::to_string(place.y + y), "click",
         "1"});
  }

  bool waitForLinkQuestions(std::size_t count) {
    return waitFor([&] { return page.delegate->linkQuestions().size() >= count; });
  }

  // The id of the element that was hit, as "id", or as "text in id".
  std::string clickedName(std::size_t question) {
    const auto node = clickedNode(page.delegate->linkQuestions().at(question));
    const auto text = std::dynamic_pointer_cast<DomText>(node);
    const auto element =
        std::dynamic_pointer_cast<DomHtmlElement>(text == nullptr ? node : text->parentElement());
    if (element == nullptr) {
      return node == nullptr ? "nothing" : "no HTML element";
    }
    return (text == nullptr ? "" : "text in ") + element->idName().value_or("?");
  }

  HostWindow host{400, 300};
  Page page;
};

constexpr const char* kLinks = R"(<body style='margin:0;font:20px monospace'>
  <a id='text' class='one two' href='https://example.com/text?a=1'
     style='position:absolute;left:0;top:0;width:200px;height:60px;display:block'>Text</a>
  <a id='link' href='https://example.com/image'
     style='position:absolute;left:200px;top:0'><img id='image' width='100' height='60'></a>
  <a id='vector' href='https://example.com/svg' style='position:absolute;left:300px;top:0'>
    <svg width='60' height='60'><rect width='60' height='60' fill='red'/></svg></a>
  <p id='plain' style='position:absolute;left:0;top:100px;margin:0'>No link here</p>
  <iframe id='frame' style='position:absolute;left:0;top:150px;width:200px;height:100px;border:0'
    srcdoc="<body style='margin:0'><a id='inner' href='https://example.com/inner'
    style='display:block;width:200px;height:100px'></a>"></iframe>
</body>)";

}  // namespace

TEST_F(WebViewTest, scriptValuesBecomeText) {
  page.loadAndWait("<p>values</p>");
  EXPECT_EQ(page.evaluate("'te\\u00e9xt'"), "te\u00e9xt");
  EXPECT_EQ(page.evaluate("''"), "");
  EXPECT_EQ(page.evaluate("12.5"), "12.5");
  EXPECT_EQ(page.evaluate("7"), "7");
  EXPECT_EQ(page.evaluate("1e30"), "1e+30");
  EXPECT_EQ(page.evaluate("true"), "true");
  EXPECT_EQ(page.evaluate("false"), "false");
  EXPECT_EQ(page.evaluate("['a', 'b']"), "");
  EXPECT_EQ(page.evaluate("({a: 1})"), "");
  EXPECT_EQ(page.evaluate("undefined"), "");
  EXPECT_EQ(page.evaluate("null"), "");
  EXPECT_EQ(page.evaluate("throw new Error('x')"), "");
  EXPECT_EQ(page.evaluate("this is no script"), "");
  EXPECT_EQ(page.evaluate("missing()"), "");
  EXPECT_EQ(page.evaluate("'x'.repeat(3000000)").size(), 3'000'000U);
}

TEST_F(WebViewTest, scriptsRunTogetherWithThePagesOwnInTheReportOfTheLoad) {
  std::string seen;
  page.delegate->onFinish = [&](const std::shared_ptr<WebView>& webView) {
    seen = webView->stringByEvaluatingJavaScriptFromString("ask()");
  };
  page.loadAndWait("<script>function ask() { return 'com.a.one,com.b.two'; }</script>");
  EXPECT_EQ(seen, "com.a.one,com.b.two");
}

TEST_F(WebViewTest, endlessScriptIsGivenUpWhileTheHostIsServed) {
  page.loadAndWait("<p>busy</p>");
  int ticks = 0;
  const guint timer = g_timeout_add(
      50,
      [](gpointer count) -> gboolean {
        ++*static_cast<int*>(count);
        return G_SOURCE_CONTINUE;
      },
      &ticks);
  const gint64 start = g_get_monotonic_time();
  EXPECT_EQ(page.evaluate("while (true) {}"), "");
  const gint64 end = g_get_monotonic_time();
  EXPECT_GE(end - start, 1'900'000);
  EXPECT_LT(end - start, 6'000'000);
  EXPECT_GE(ticks, 10);
  g_source_remove(timer);
  EXPECT_EQ(page.evaluate("'next'"), "");
  EXPECT_LT(g_get_monotonic_time() - end, 1'000'000) << "the next one does not wait again";
}

TEST_F(WebViewTest, slowScriptThatComesBackFreesThePageAgain) {
  page.loadAndWait("<p>slow</p>");
  EXPECT_EQ(page.evaluate("const end = Date.now() + 8000; while (Date.now() < end) {} 'late'"), "");
  EXPECT_TRUE(waitFor([&] { return page.evaluate("'again'") == "again"; }));
}

TEST_F(WebViewTest, scriptsLeftToABusyPageAreEvaluatedWhenItIsBack) {
  page.loadAndWait("<p>slow</p>");
  bool isBack = false;
  EXPECT_TRUE(page.webView()->isPageAnswering());
  EXPECT_EQ(page.evaluate("const end = Date.now() + 8000; while (Date.now() < end) {} 'late'"), "");
  EXPECT_FALSE(page.webView()->isPageAnswering());
  EXPECT_EQ(page.evaluate("var left = 'done'; left"), "");
  page.webView()->performWhenPageAnswers([&] { isBack = true; });
  EXPECT_FALSE(isBack);
  ASSERT_TRUE(waitFor([&] { return isBack; }));
  EXPECT_TRUE(page.webView()->isPageAnswering());
  EXPECT_EQ(page.evaluate("left"), "done");
}

TEST_F(WebViewTest, timeThatTheHostSpendsInItsHandlersIsNotTheScripts) {
  page.loadAndWait("<p>slow</p>");
  g_timeout_add(
      100,
      [](gpointer) -> gboolean {
        g_usleep(2'500'000);  // the host works
        return G_SOURCE_REMOVE;
      },
      nullptr);
  EXPECT_EQ(page.evaluate("const end = Date.now() + 3000; while (Date.now() < end) {} 'late'"),
            "late");
}

TEST_F(WebViewTest, withoutTheModuleNothingIsEvaluatedAndOneLineSaysSo) {
  WebKitWebContext* context = webkit_web_context_new_ephemeral();
  GtkWidget* engine = webkit_web_view_new_with_context(context);
  const auto delegate = std::make_shared<RecordingDelegate>();
  const auto webView = gtk::WebKitView::create(
      WEBKIT_WEB_VIEW(engine),
      std::dynamic_pointer_cast<gtk::MainContextRunLoop>(platform().mainRunLoop), delegate);
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_container_add(GTK_CONTAINER(window), engine);
  g_object_unref(context);
  gtk_widget_show_all(window);
  log->takeLines();
  webView->loadHtmlString("<p>alone</p>", Url::fileUrl("/"));
  ASSERT_TRUE(waitFor([&] { return delegate->mainLoads() == 1; }));
  EXPECT_EQ(webView->stringByEvaluatingJavaScriptFromString("1 + 1"), "");
  EXPECT_EQ(webView->stringByEvaluatingJavaScriptFromString("2 + 2"), "");
  EXPECT_EQ(
      log->lines(),
      (std::vector<std::string>{"ZAM Ad pages cannot be asked anything: the web process has not "
                                "loaded " +
                                gtk::webProcessModulePath()}));
  gtk_widget_destroy(window);
}

TEST_F(WebViewTest, everyFrameReportsItsLoadAndTheMainFrameComesLast) {
  page.loadAndWait("<iframe srcdoc='<p>one</p>'></iframe><iframe srcdoc='<p>two</p>'></iframe>");
  serveLoop();
  EXPECT_EQ(page.delegate->finishedFrames, (std::vector{false, false, true}));
  page.delegate->finishedFrames.clear();
  page.loadAndWait("<p>no inner frames</p>");
  serveLoop();
  EXPECT_EQ(page.delegate->finishedFrames, (std::vector{true}));
}

TEST_F(WebViewTest, reportsDoNotInterruptOneAnother) {
  int depth = 0;
  int deepest = 0;
  page.delegate->onFinish = [&](const std::shared_ptr<WebView>& webView) {
    deepest = std::max(deepest, ++depth);
    webView->stringByEvaluatingJavaScriptFromString(
        "const until = Date.now() + 100; while (Date.now() < until) {} 1");
    --depth;
  };
  page.loadAndWait("<iframe srcdoc='1'></iframe><iframe srcdoc='2'></iframe>");
  EXPECT_EQ(page.delegate->finishedFrames.size(), 3U);
  EXPECT_EQ(deepest, 1);
}

TEST_F(WebViewTest, imageByItsBareNameComesFromTheLibrarysFolder) {
  const std::filesystem::path folder =
      std::filesystem::path(platform().libraryBundle->executableUrl().absoluteString().substr(7))
          .parent_path();
  const std::string name = "qorix-test-" + std::to_string(getpid()) + ".svg";
  std::ofstream(folder / name)
      << "<svg xmlns='http://www.w3.org/2000/svg' width='33' height='22'></svg>";
  page.loadAndWait("<img id='image' src='" + name + "'>");
  EXPECT_EQ(page.evaluate("document.getElementById('image').naturalWidth"), "33");
  std::filesystem::remove(folder / name);
}

TEST_F(WebViewTest, filesCannotBeReadByScript) {
  page.loadAndWait(
      "<script>var outcome = '';"
      "fetch('file:///etc/hostname').then(r => r.text()).then(t => outcome = 'read ' + t,"
      "                                                       e => outcome = 'refused');"
      "var request = new XMLHttpRequest(); var second = '';"
      "try { request.open('GET', 'file:///etc/hostname', false); request.send();"
      "      second = 'read ' + request.responseText; } catch (e) { second = 'refused'; }"
      "</script>");
  EXPECT_TRUE(waitFor([&] { return page.evaluate("outcome") == "refused"; }));
  EXPECT_EQ(page.evaluate("second"), "refused");
}

TEST_F(WebViewTest, transparentPageShowsTheHost) {
  page.webView()->setDrawsBackground(false);
  showAndLoad("<body style='margin:0'><div style='width:100px;height:100px;background:#f00'>");
  const GdkRectangle place = host.overlayOnScreen();
  EXPECT_TRUE(waitFor([&] { return colorAt(place.x + 50, place.y + 50) == kRed; }));
  EXPECT_EQ(colorAt(place.x + 200, place.y + 200), kGreen);
  page.webView()->setDrawsBackground(true);
  EXPECT_TRUE(waitFor([&] {
    return colorAt(place.x + 200, place.y + 200) == Pixel{255, 255, 255};
  }));
}

TEST_F(WebViewTest, clickNamesTheInnermostNode) {
  showAndLoad(kLinks);
  const std::size_t before = page.delegate->finishedFrames.size();
  clickAt(10, 12);
  ASSERT_TRUE(waitForLinkQuestions(1));
  EXPECT_EQ(clickedName(0), "text in text");
  EXPECT_EQ(page.delegate->linkQuestions()[0].url, "https://example.com/text?a=1");
  const auto text =
      std::dynamic_pointer_cast<DomText>(clickedNode(page.delegate->linkQuestions()[0]));
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(std::dynamic_pointer_cast<DomHtmlElement>(text->parentElement())->className(),
            "one two");
  clickAt(150, 45);
  ASSERT_TRUE(waitForLinkQuestions(2));
  EXPECT_EQ(clickedName(1), "text") << "beside the text it is the link itself";
  clickAt(250, 30);
  ASSERT_TRUE(waitForLinkQuestions(3));
  EXPECT_EQ(clickedName(2), "image");
  clickAt(330, 30);
  ASSERT_TRUE(waitForLinkQuestions(4));
  EXPECT_EQ(clickedName(3), "no HTML element");
  EXPECT_TRUE(page.delegate->linkQuestions()[3].isMainFrame);
  clickAt(50, 200);
  ASSERT_TRUE(waitForLinkQuestions(5));
  EXPECT_EQ(clickedName(4), "inner");
  EXPECT_FALSE(page.delegate->linkQuestions()[4].isMainFrame);
  serveLoop();
  EXPECT_EQ(page.delegate->finishedFrames.size(), before) << "ignored links load nothing";
  EXPECT_EQ(page.evaluate("document.getElementById('plain').textContent"), "No link here");
}

TEST_F(WebViewTest, clickByScriptNamesTheElementAndNoLaterNavigationDoes) {
  showAndLoad(kLinks);
  page.evaluate("document.getElementById('link').click()");
  ASSERT_TRUE(waitForLinkQuestions(1));
  EXPECT_EQ(clickedName(0), "link");
  clickAt(10, 110);  // no link, so nothing takes up the node
  page.evaluate("location.href = 'https://example.com/by-script'");
  ASSERT_TRUE(waitFor(
      [&] { return page.delegate->questions.back().url == "https://example.com/by-script"; }));
  EXPECT_EQ(page.delegate->linkQuestions().size(), 1U);
  EXPECT_EQ(clickedNode(page.delegate->questions.back()), nullptr);
}

TEST_F(WebViewTest, linkFollowedByKeyboardNamesTheFocusedLink) {
  showAndLoad(kLinks);
  page.evaluate("var clicks = 0; addEventListener('click', () => ++clicks); 1");
  clickAt(10, 110);
  ASSERT_TRUE(waitFor([&] { return page.evaluate("clicks") == "1"; }));
  page.evaluate("document.getElementById('text').focus()");
  run({"xdotool", "key", "Return"});
  ASSERT_TRUE(waitForLinkQuestions(1));
  EXPECT_EQ(clickedName(0), "text");
}

TEST_F(WebViewTest, pageCannotReachTheLibrarysWorld) {
  page.loadAndWait("<p>hostile</p>");
  EXPECT_EQ(page.evaluate("typeof window.webkit === 'undefined' ||"
                          "typeof window.webkit.messageHandlers === 'undefined' ||"
                          "typeof window.webkit.messageHandlers.qorix === 'undefined'"),
            "true");
}

TEST_F(WebViewTest, scriptCannotOpenAnythingOnTheDesktop) {
  showAndLoad("<p>hostile</p>");
  EXPECT_EQ(page.evaluate("alert('stop'); String(confirm('?')) + String(prompt('?', 'x'))"),
            "falsenull");
  EXPECT_EQ(page.evaluate("String(window.open('https://example.com'))"), "null");
  EXPECT_EQ(page.evaluate("print(); window.close(); 'still here'"), "still here");
  page.evaluate(
      "var where = ''; navigator.geolocation.getCurrentPosition("
      "() => where = 'found', () => where = 'denied'); 1");
  EXPECT_TRUE(waitFor([&] { return page.evaluate("where") == "denied"; }));
  page.evaluate(
      "var link = document.createElement('a'); link.download = 'qorix-download';"
      "link.href = URL.createObjectURL(new Blob(['x'])); link.click(); 1");
  serveLoop();
  GList* toplevels = gtk_window_list_toplevels();
  int visible = 0;
  for (GList* each = toplevels; each != nullptr; each = each->next) {
    visible += gtk_widget_get_visible(GTK_WIDGET(each->data));
  }
  g_list_free(toplevels);
  EXPECT_EQ(visible, 1);
}

TEST_F(WebViewTest, downloadIsRefused) {
  page.delegate->ignoresLinks = false;
  showAndLoad("<a id='link' download='qorix-download.txt' href='data:text/plain,hello'>x</a>");
  bool ended = false;
  page.evaluate("document.getElementById('link').click(); 1");
  g_timeout_add(
      500,
      [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
      },
      &ended);
  EXPECT_TRUE(waitFor([&] { return ended; }));
  for (const auto& entry : std::filesystem::recursive_directory_iterator(g_get_home_dir())) {
    EXPECT_EQ(entry.path().string().find("qorix-download"), std::string::npos) << entry.path();
  }
}

TEST_F(WebViewTest, crashedPageIsLoggedOnceAndTheHostGoesOn) {
  showAndLoad("<p>crash</p>");
  GList* children = gtk_container_get_children(GTK_CONTAINER(host.overlay()));
  GtkWidget* root = GTK_WIDGET(g_list_last(children)->data);
  g_list_free(children);
  log->takeLines();
  webkit_web_view_terminate_web_process(WEBKIT_WEB_VIEW(gtk_bin_get_child(GTK_BIN(root))));
  ASSERT_TRUE(waitFor([&] { return !log->lines().empty(); }));
  EXPECT_EQ(log->lines(),
            (std::vector<std::string>{"ZAM Ad page's web process ended: terminated"}));
  EXPECT_EQ(page.webView()->frame(), (Rect{{0, 0}, {400, 300}}));
  page.loadAndWait("<script>var answer = 5</script>");
  EXPECT_EQ(page.evaluate("answer"), "5") << "a new page can be loaded";
}

TEST_F(WebViewTest, unreachableLinkLeavesThePageAlone) {
  // An address that is taken, but that nobody listens at.
  const int taken = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  ASSERT_EQ(bind(taken, reinterpret_cast<sockaddr*>(&address), length), 0);
  ASSERT_EQ(getsockname(taken, reinterpret_cast<sockaddr*>(&address), &length), 0);
  const std::string url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
  page.delegate->ignoresLinks = false;
  showAndLoad("<a id='link' href='" + url + "'>gone</a><script>var kept = 1</script>");
  page.evaluate("document.getElementById('link').click(); 1");
  ASSERT_TRUE(waitForLinkQuestions(1));
  page.evaluate("fetch('" + url + "').catch(() => { kept = 2 }); 1");
  EXPECT_TRUE(waitFor([&] { return page.evaluate("kept") == "2"; }));
  EXPECT_EQ(page.delegate->mainLoads(), 1);
  close(taken);
}

TEST_F(WebViewTest, hostMayDestroyItsWindowWhileAScriptRuns) {
  showAndLoad("<p>busy</p>");
  g_timeout_add(
      200,
      [](gpointer window) -> gboolean {
        static_cast<HostWindow*>(window)->destroy();
        return G_SOURCE_REMOVE;
      },
      &host);
  const gint64 start = g_get_monotonic_time();
  const auto webView = page.webView();
  EXPECT_EQ(webView->stringByEvaluatingJavaScriptFromString("while (true) {}"), "");
  EXPECT_LT(g_get_monotonic_time() - start, 1'500'000) << "it is not waited for";
  EXPECT_EQ(webView->frame(), Rect{});
  EXPECT_EQ(webView->stringByEvaluatingJavaScriptFromString("1"), "");
  webView->loadHtmlString("<p>nowhere</p>", Url::fileUrl("/"));
  webView->setDrawsBackground(false);
}

TEST_F(WebViewTest, hostMayDestroyItsWindowWhileThePageLoads) {
  host.show();
  page.showIn(host, {{0, 0}, {400, 300}});
  page.load("<p>loading</p><iframe srcdoc='<p>inner</p>'></iframe>");
  g_main_context_iteration(nullptr, FALSE);
  host.destroy();
  EXPECT_TRUE(page.interface->webView.expired());
  bool waited = false;
  g_timeout_add(
      500,
      [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
      },
      &waited);
  EXPECT_TRUE(waitFor([&] { return waited; }));
  EXPECT_TRUE(page.delegate->finishedFrames.empty());
}

TEST_F(WebViewTest, hostMayDestroyItsWindowInTheReportOfALoad) {
  page.delegate->onFinish = [&](const std::shared_ptr<WebView>&) { host.destroy(); };
  showAndLoad("<p>done</p>");
  EXPECT_TRUE(page.interface->webView.expired());
}

TEST_F(WebViewTest, hostMayDestroyItsWindowInAPolicyQuestion) {
  showAndLoad(kLinks);
  page.delegate->onQuestion = [&](const std::shared_ptr<WebView>&) { host.destroy(); };
  clickAt(10, 12);
  ASSERT_TRUE(waitForLinkQuestions(1));
  serveLoop();
  EXPECT_TRUE(page.interface->webView.expired());
}

TEST_F(WebViewTest, bannerMayBeTakenAwayInAPolicyQuestion) {
  showAndLoad(kLinks);
  page.delegate->onQuestion = [&](const std::shared_ptr<WebView>&) {
    page.interface->view->removeFromSuperview();
    page.interface->view.reset();
  };
  clickAt(10, 12);
  ASSERT_TRUE(waitForLinkQuestions(1));
  EXPECT_TRUE(waitFor([&] { return page.interface->webView.expired(); }));
}

TEST_F(WebViewTest, enginesObjectsAreReleasedWithTheBanner) {
  showAndLoad("<p>short life</p>");
  page.evaluate("1");
  GList* children = gtk_container_get_children(GTK_CONTAINER(host.overlay()));
  GtkWidget* root = GTK_WIDGET(g_list_last(children)->data);
  g_list_free(children);
  auto* engine = WEBKIT_WEB_VIEW(gtk_bin_get_child(GTK_BIN(root)));
  int released = 0;
  const auto count = [](gpointer number, GObject* /*object*/) { ++*static_cast<int*>(number); };
  g_object_weak_ref(G_OBJECT(root), count, &released);
  g_object_weak_ref(G_OBJECT(engine), count, &released);
  g_object_weak_ref(G_OBJECT(webkit_web_view_get_user_content_manager(engine)), count, &released);
  g_object_weak_ref(G_OBJECT(webkit_web_view_get_settings(engine)), count, &released);
  page.interface->view->removeFromSuperview();
  page.interface.reset();
  EXPECT_TRUE(waitFor([&] { return released == 4; })) << released;
}

TEST_F(WebViewTest, unknownInterfaceFileIsLoggedOnce) {
  log->takeLines();
  EXPECT_FALSE(platform().interfaceLoader->load("Missing", *platform().libraryBundle, {}));
  EXPECT_EQ(log->takeLines().size(), 1U);
  const Bundle other(std::nullopt, Url::fileUrl("/somewhere/else.so"));
  EXPECT_FALSE(platform().interfaceLoader->load("MyPushAdViewController", other, {}));
  EXPECT_EQ(log->takeLines().size(), 1U);
}

}  // namespace qorix::test
