#include <functional>
#include <memory>
#include <ostream>

#include "fakes/FakeInterfaceLoader.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {
namespace {

struct WebViewImplementation {
  const char* name;
  std::function<std::shared_ptr<InterfaceLoader>()> makeLoader;
  /// Makes the page define `ask()`, which returns "com.a.one", and `fail()`, which throws.
  std::function<void(WebView&, RecordingDelegate&)> loadPage;

  friend void PrintTo(const WebViewImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

void loadFakePage(WebView& webView, RecordingDelegate& /*delegate*/) {
  dynamic_cast<FakeWebView&>(webView).page = [](const std::string& script) {
    return script == "ask()" ? "com.a.one" : "";
  };
}

void loadGtkPage(WebView& webView, RecordingDelegate& delegate) {
  webView.loadHtmlString(
      "<script>function ask() { return 'com.a.one' } function fail() { throw 1 }</script>",
      Url::fileUrl("/"));
  EXPECT_TRUE(waitFor([&] { return delegate.mainLoads() == 1; }));
}

/// What the views of the library's interface file do.
class WebViewContractTest : public GtkTest,
                            public testing::WithParamInterface<WebViewImplementation> {
 protected:
  const std::shared_ptr<InterfaceLoader> loader = GetParam().makeLoader();
  const std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  std::optional<Interface> interface =
      loader->load("MyPushAdViewController", *platform().libraryBundle, delegate);
};

}  // namespace

TEST_P(WebViewContractTest, webViewLiesInTheBoxViewThatKeepsItAlive) {
  ASSERT_TRUE(interface);
  EXPECT_EQ(interface->view->tag(), 27921);
  ASSERT_FALSE(interface->webView.expired());
  EXPECT_EQ(interface->webView.lock()->superview(), interface->view);
  interface->view.reset();
  EXPECT_TRUE(interface->webView.expired());
}

TEST_P(WebViewContractTest, everyLoadMakesNewViews) {
  const auto second = loader->load("MyPushAdViewController", *platform().libraryBundle, delegate);
  ASSERT_TRUE(second);
  EXPECT_NE(second->view, interface->view);
  EXPECT_NE(second->webView.lock(), interface->webView.lock());
}

TEST_P(WebViewContractTest, evaluationAnswersThePagesText) {
  const auto webView = interface->webView.lock();
  GetParam().loadPage(*webView, *delegate);
  EXPECT_EQ(webView->stringByEvaluatingJavaScriptFromString("ask()"), "com.a.one");
  EXPECT_EQ(webView->stringByEvaluatingJavaScriptFromString("fail()"), "");
  EXPECT_EQ(webView->stringByEvaluatingJavaScriptFromString("undefined"), "");
}

INSTANTIATE_TEST_SUITE_P(
    , WebViewContractTest,
    testing::Values(
        WebViewImplementation{"Fake", [] { return std::make_shared<FakeInterfaceLoader>(); },
                              loadFakePage},
        WebViewImplementation{"Gtk", [] { return platform().interfaceLoader; }, loadGtkPage}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace qorix::test
