// A host may destroy its view or its window in every state of an advertisement.

#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdNotifications.h>

#include "support/LoopbackServer.h"
#include "support/Records.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

enum class End { destroyView, destroyWindow };

/// The test's process is the host: the manager and the shared window live as they do there.
class HostLifeTest : public GtkTest, public testing::WithParamInterface<End> {
 protected:
  HostLifeTest() {
    host_.show();
    platform()
        .notificationCenter
        ->addObserver(kPushAdWillShowNotification,
                      [this](const Notification& /*each*/) { ++showings_; })
        .keep();
  }

  /// Asks the manager for an advertisement that is due every time.
  void request(RecordOf values, const std::string& page) {
    values.version = "";
    auto record = makeRecord(values);
    record->setHtmlContentsDict(LocalizedTexts{{"default", page}});
    const auto manager = MyPushAdManager::sharedPushAdManager();
    manager->configureWithAppBundle(platform().mainBundle);
    manager->setLonePushAdInfo(record);
    manager->prepareAndShowAdWithHostView(host_.view(), MyPushAdFileHostModeWebServer,
                                          std::nullopt);
  }

  void waitForShowing() {
    ASSERT_TRUE(waitFor([this] { return showings_ > 0; }));
  }

  void waitForPage() {
    ASSERT_TRUE(waitFor([this] { return pageTitle() == "loaded"; }));
  }

  std::string pageTitle() {
    const auto webView = controller().legacyWebView();
    return webView == nullptr ? ""
                              : webView->stringByEvaluatingJavaScriptFromString("document.title");
  }

  static MyPushAdViewController& controller() {
    return *MyPushAdManager::sharedPushAdManager()
                ->pushAdOperators()
                ->back()
                ->pushAdViewController();
  }

  void destroy() {
    if (GetParam() == End::destroyView) {
      gtk_widget_destroy(GTK_WIDGET(host_.overlay()));
    } else {
      host_.destroy();
    }
    isDestroyed_ = true;
  }

  /// The host ends its part. What was under way continues and must still find all it needs.
  void end() {
    destroy();
    bool isLater = false;
    platform().mainRunLoop->performAfterDelay(0.3, [&isLater] { isLater = true; });
    ASSERT_TRUE(waitFor([&isLater] { return isLater; }));
  }

  static constexpr const char* kPage = "<title>loaded</title><body style='background:#f00'>ad";

  HostWindow host_{400, 300};
  int showings_ = 0;
  bool isDestroyed_ = false;
};

}  // namespace

TEST_P(HostLifeTest, whileWaitingForADefinition) {
  MyPushAdManager::sharedPushAdManager()->prepareAndShowAdWithHostView(
      host_.view(), MyPushAdFileHostModeWebServer, "http://127.0.0.1:9/");
  end();
}

TEST_P(HostLifeTest, whileTheShowingIsScheduled) {
  request({.embed = 1, .delay = 0}, kPage);
  end();
}

TEST_P(HostLifeTest, whileThePageIsLoading) {
  request({.embed = 1}, kPage);
  waitForShowing();
  end();
}

TEST_P(HostLifeTest, whileABannerIsShown) {
  request({.embed = 1}, kPage);
  waitForShowing();
  waitForPage();
  end();
}

TEST_P(HostLifeTest, afterABannerWasClosed) {
  request({.embed = 1}, kPage);
  waitForShowing();
  waitForPage();
  controller().handleCloseButtonClicked();
  end();
}

TEST_P(HostLifeTest, whileAPopupIsShown) {
  request({.embed = 0}, kPage);
  waitForShowing();
  waitForPage();
  end();
}

TEST_P(HostLifeTest, whileAScriptOfThePageRuns) {
  // The page reports to the server that it was called, and then is slow; the host acts
  // meanwhile.
  LoopbackServer server;
  request({.embed = 1},
          "<script>function cocoa_obtain_promo_app_ids() {"
          " var request = new XMLHttpRequest(); request.open('GET', '" +
              server.url("/asked") +
              "', false); try { request.send(); } catch (e) {}"
              " var end = Date.now() + 1500; while (Date.now() < end) {}"
              " return 'a'; }"
              "function cocoa_post_promo_app_info() {}</script>");
  std::function<bool()> act = [&] {
    if (!server.requests().empty()) {
      destroy();
    }
    return isDestroyed_;
  };
  g_timeout_add(
      5,
      [](gpointer data) -> gboolean {
        return (*static_cast<std::function<bool()>*>(data))() ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
      },
      &act);
  ASSERT_TRUE(waitFor([this] { return isDestroyed_; }));
  bool isLater = false;
  platform().mainRunLoop->performAfterDelay(0.3, [&isLater] { isLater = true; });
  ASSERT_TRUE(waitFor([&isLater] { return isLater; }));
}

INSTANTIATE_TEST_SUITE_P(Ends, HostLifeTest, testing::Values(End::destroyView, End::destroyWindow),
                         [](const auto& each) {
                           return each.param == End::destroyView ? "destroyView" : "destroyWindow";
                         });

}  // namespace qorix::test
