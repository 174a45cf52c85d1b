// The real source on its own thread, and the real loop of a host that does other things meanwhile.

#include <chrono>
#include <thread>

#include <qorix/MyPushAdWebServerManager.h>

#include "support/LoopbackServer.h"
#include "support/gtk/GtkTest.h"
#include "support/gtk/Menu.h"

namespace qorix::test {

namespace {

/// Counts the outcomes, which belong to the main thread.
struct Outcomes : MyPushAdDownloadDelegate {
  void downloadFailedWithError(const Error& /*error*/) override { count(failures); }
  void downloadSuccessfullyWithString(const std::string& text) override {
    EXPECT_EQ(text, "a document");
    count(successes);
  }
  void count(int& kind) const {
    EXPECT_EQ(std::this_thread::get_id(), mainThread);
    ++kind;
  }

  const std::thread::id mainThread = std::this_thread::get_id();
  int successes = 0;
  int failures = 0;
};

class SourceThreadsTest : public GtkTest {
 protected:
  static constexpr int kFetches = 10;

  SourceThreadsTest() { server_.setAnswer("/ads.xml", {.body = {"a ", "document"}}); }

  /// Fetches several times, every other time from nobody; does `act` while each transfer runs.
  void fetchWhile(const std::function<void()>& act) {
    for (int i = 0; i < kFetches; ++i) {
      const bool isThere = i % 2 == 0;
      sources_.push_back(MyPushAdWebServerManager::createInstanceWithFileURLString(
          isThere ? server_.url("/ads.xml") : "http://127.0.0.1:1/ads.xml"));
      sources_.back()->setDelegate(outcomes_);
      sources_.back()->downloadAdFileAsync();
      act();
    }
  }

  void expectOneOutcomeEach() {
    const auto all = [this] { return outcomes_->successes + outcomes_->failures; };
    EXPECT_TRUE(waitFor([&] { return all() >= kFetches; }));
    bool isLater = false;
    platform().mainRunLoop->performAfterDelay(0.1, [&] { isLater = true; });
    EXPECT_TRUE(waitFor([&] { return isLater; }));
    EXPECT_EQ(outcomes_->successes, kFetches / 2);
    EXPECT_EQ(outcomes_->failures, kFetches / 2);
  }

  LoopbackServer server_;
  std::vector<std::shared_ptr<MyPushAdSource>> sources_;
  std::shared_ptr<Outcomes> outcomes_ = std::make_shared<Outcomes>();
};

}  // namespace

TEST_F(SourceThreadsTest, whileTheMainLoopIsBusyOutcomesWait) {
  fetchWhile([this] {
    const auto before = outcomes_->successes + outcomes_->failures;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
    while (std::chrono::steady_clock::now() < end) {
      EXPECT_EQ(outcomes_->successes + outcomes_->failures, before);
    }
  });
  expectOneOutcomeEach();
}

TEST_F(SourceThreadsTest, whileTheHostSitsInAMenuOutcomesArrive) {
  HostWindow host(300, 200);
  gtk_widget_add_events(gtk_bin_get_child(GTK_BIN(host.overlay())), GDK_BUTTON_PRESS_MASK);
  host.show();
  GtkWidget* menu = popUpMenu(host);
  fetchWhile([] { g_main_context_iteration(nullptr, FALSE); });
  EXPECT_TRUE(waitFor([&] { return outcomes_->successes + outcomes_->failures == kFetches; }));
  EXPECT_TRUE(gtk_widget_get_mapped(menu)) << "the menu is still open";
  gtk_menu_popdown(GTK_MENU(menu));
  expectOneOutcomeEach();
}

}  // namespace qorix::test
