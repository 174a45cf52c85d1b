#include <future>
#include <stdexcept>
#include <thread>

#include <qorix/MyPushAdUtil.h>

#include "platform/gtk/MenuTracking.h"
#include "support/gtk/GtkTest.h"
#include "support/gtk/Menu.h"

namespace qorix::test {

namespace {

class RunLoopTest : public GtkTest {
 protected:
  // Whether a delayed perform waits for what is open now, and runs once `close` has ended it.
  void expectToHoldBackPerforms(const std::function<void()>& close) {
    bool performed = false;
    bool dispatched = false;
    bool later = false;
    loop.performAfterDelay(0, [&] { performed = true; });
    loop.dispatchAsync([&] { dispatched = true; });
    g_timeout_add(
        300,
        [](gpointer flag) -> gboolean {
          *static_cast<bool*>(flag) = true;
          return G_SOURCE_REMOVE;
        },
        &later);
    EXPECT_TRUE(waitFor([&] { return later && dispatched; }));
    EXPECT_FALSE(performed);
    close();
    EXPECT_TRUE(waitFor([&] { return performed; }));
  }

  RunLoop& loop = *platform().mainRunLoop;
};

// A modal dialog that ends when `end` is called.
class Dialog {
 public:
  explicit Dialog(const HostWindow& host)
      : dialog_(gtk_message_dialog_new(host.window(), GTK_DIALOG_MODAL, GTK_MESSAGE_INFO,
                                       GTK_BUTTONS_OK, "Wait")) {}
  ~Dialog() { gtk_widget_destroy(dialog_); }
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;

  void run() { EXPECT_EQ(gtk_dialog_run(GTK_DIALOG(dialog_)), GTK_RESPONSE_OK); }
  void end() { gtk_dialog_response(GTK_DIALOG(dialog_), GTK_RESPONSE_OK); }

 private:
  GtkWidget* dialog_;
};

}  // namespace

TEST_F(RunLoopTest, delayedPerformWaitsForAMenuAndDispatchDoesNot) {
  HostWindow host(300, 200);
  gtk_widget_add_events(gtk_bin_get_child(GTK_BIN(host.overlay())), GDK_BUTTON_PRESS_MASK);
  host.show();
  GtkWidget* menu = popUpMenu(host);
  expectToHoldBackPerforms([&] { gtk_menu_popdown(GTK_MENU(menu)); });
}

TEST_F(RunLoopTest, delayedPerformWaitsForAMenuOfAWindowGroupOfItsOwn) {
  HostWindow host(300, 200);
  GtkWindowGroup* group = gtk_window_group_new();
  gtk_window_group_add_window(group, host.window());
  gtk_widget_add_events(gtk_bin_get_child(GTK_BIN(host.overlay())), GDK_BUTTON_PRESS_MASK);
  host.show();
  GtkWidget* menu = popUpMenu(host);
  ASSERT_NE(gtk_grab_get_current(), menu) << "the default group knows nothing of it";
  expectToHoldBackPerforms([&] { gtk_menu_popdown(GTK_MENU(menu)); });
  g_object_unref(group);
}

TEST_F(RunLoopTest, delayedPerformWaitsForTheMenuOfAMenuButton) {
  HostWindow host(300, 200);
  GMenu* model = g_menu_new();
  g_menu_append(model, "Item", nullptr);
  GtkWidget* button = gtk_menu_button_new();
  gtk_menu_button_set_menu_model(GTK_MENU_BUTTON(button), G_MENU_MODEL(model));
  gtk_widget_set_halign(button, GTK_ALIGN_START);
  gtk_widget_set_valign(button, GTK_ALIGN_START);
  gtk_overlay_add_overlay(host.overlay(), button);
  host.show();
  GtkPopover* popover = gtk_menu_button_get_popover(GTK_MENU_BUTTON(button));
  ASSERT_FALSE(GTK_IS_POPOVER_MENU(popover));
  gtk_button_clicked(GTK_BUTTON(button));
  ASSERT_TRUE(waitFor([&] { return gtk_widget_get_mapped(GTK_WIDGET(popover)) != FALSE; }));
  expectToHoldBackPerforms([&] { gtk_popover_popdown(popover); });
  g_object_unref(model);
}

TEST_F(RunLoopTest, aPopoverWithoutAMenuHoldsNothingBack) {
  HostWindow host(300, 200);
  host.show();
  GtkWidget* popover = gtk_popover_new(GTK_WIDGET(host.overlay()));
  gtk_container_add(GTK_CONTAINER(popover), newColoredArea(kBlue, 50, 50));
  gtk_widget_show_all(popover);
  ASSERT_TRUE(waitFor([&] { return gtk_grab_get_current() == popover; }));
  EXPECT_FALSE(gtk::isMenuTracked());
  bool performed = false;
  loop.performAfterDelay(0, [&] { performed = true; });
  EXPECT_TRUE(waitFor([&] { return performed; }));
}

TEST_F(RunLoopTest, delayedPerformFiresInAModalDialog) {
  HostWindow host(300, 200);
  host.show();
  Dialog dialog(host);
  std::vector<int> order;
  loop.performAfterDelay(0.05, [&] { order.push_back(1); });
  loop.performAfterDelay(0.05, [&] {
    order.push_back(2);
    dialog.end();
  });
  dialog.run();
  EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST_F(RunLoopTest, dispatchedTasksRunInAModalDialogOfTheHost) {
  HostWindow host(300, 200);
  host.show();
  Dialog dialog(host);
  loop.dispatchAsync([&] { dialog.end(); });
  dialog.run();
}

TEST_F(RunLoopTest, observersHearOneNotificationAfterTheOtherThoughOneOfThemRunsAModalDialog) {
  HostWindow host(300, 200);
  host.show();
  Dialog dialog(host);
  std::vector<std::string> heard;
  for (const char* name : {"first", "second"}) {
    platform()
        .notificationCenter
        ->addObserver(name,
                      [&](const Notification& each) {
                        heard.push_back("early " + each.name());
                        if (each.name() == "first") {
                          loop.performAfterDelay(0.1, [&] { dialog.end(); });
                          dialog.run();
                        }
                      })
        .keep();
    platform()
        .notificationCenter
        ->addObserver(name,
                      [&](const Notification& each) { heard.push_back("late " + each.name()); })
        .keep();
    MyPushAdUtil::postOnMainThreadNotificationName(name, nullptr, std::nullopt);
  }
  ASSERT_TRUE(waitFor([&] { return heard.size() == 4; }));
  EXPECT_EQ(heard,
            (std::vector<std::string>{"early first", "late first", "early second", "late second"}));
}

TEST_F(RunLoopTest, whatATaskThrowsIsLoggedAndTheOthersRun) {
  std::vector<int> ran;
  loop.dispatchAsync([] { throw std::runtime_error("queued"); });
  loop.dispatchAsync([&] { ran.push_back(1); });
  loop.performAfterDelay(0, [] { throw std::runtime_error("delayed"); });
  loop.performAfterDelay(0, [&] { ran.push_back(2); });
  std::thread waiter([this, &ran] {
    loop.performAndWait([] { throw std::runtime_error("awaited"); });
    loop.performAndWait([&ran] { ran.push_back(3); });
  });
  EXPECT_TRUE(waitFor([&] { return ran.size() == 3; }));
  waiter.join();
  EXPECT_EQ(log->lines().size(), 3U);
}

TEST_F(RunLoopTest, tasksWaitWhileAScriptIsEvaluatedAndTheLoopDoesNotSpin) {
  Page page;
  page.loadAndWait("<p>loop</p>");
  int ran = 0;
  int iterations = 0;
  loop.performAfterDelay(0, [&] { ++ran; });
  loop.dispatchAsync([&] { ++ran; });
  const guint counter = g_idle_add_full(
      G_PRIORITY_HIGH,
      [](gpointer count) -> gboolean {
        ++*static_cast<int*>(count);
        return G_SOURCE_REMOVE;
      },
      &iterations, nullptr);
  EXPECT_NE(counter, 0U);
  EXPECT_EQ(page.evaluate("const end = Date.now() + 300; while (Date.now() < end) {} 'late'"),
            "late");
  EXPECT_EQ(ran, 0);
  EXPECT_EQ(iterations, 1) << "the host's own sources are served";
  EXPECT_TRUE(waitFor([&] { return ran == 2; }));
}

TEST_F(RunLoopTest, tasksRunInADialogThatIsOpenedWhileAScriptIsEvaluated) {
  HostWindow host(300, 200);
  host.show();
  Page page;
  page.loadAndWait("<p>loop</p>");
  GtkWidget* dialog = gtk_message_dialog_new(host.window(), GTK_DIALOG_MODAL, GTK_MESSAGE_INFO,
                                             GTK_BUTTONS_OK, "Wait");
  int tasks = 0;
  int tasksBefore = -1;
  const auto task = [&] {
    if (++tasks == 2) {
      gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_OK);
    }
  };
  loop.performAfterDelay(0, task);
  loop.dispatchAsync(task);
  std::function<void()> openDialog = [&] {
    tasksBefore = tasks;
    gtk_dialog_run(GTK_DIALOG(dialog));
  };
  g_timeout_add(
      100,
      [](gpointer open) -> gboolean {
        (*static_cast<std::function<void()>*>(open))();
        return G_SOURCE_REMOVE;
      },
      &openDialog);
  EXPECT_EQ(page.evaluate("const end = Date.now() + 1000; while (Date.now() < end) {} 'late'"),
            "late");
  EXPECT_EQ(tasksBefore, 0) << "they wait for the script";
  EXPECT_EQ(tasks, 2) << "and not for the dialog";
  gtk_widget_destroy(dialog);
}

TEST_F(RunLoopTest, theHostIsServedWithoutAnyTask) {
  bool ran = false;
  int turns = 0;
  loop.performAfterDelay(0, [&] { ran = true; });
  loop.dispatchAsync([&] { ran = true; });
  const guint idle = g_idle_add(
      [](gpointer count) -> gboolean {
        ++*static_cast<int*>(count);
        return G_SOURCE_CONTINUE;
      },
      &turns);
  loop.serveHost();  // returns, though the host always has more to do
  EXPECT_GT(turns, 0);
  EXPECT_FALSE(ran);
  g_source_remove(idle);
  EXPECT_TRUE(waitFor([&] { return ran; }));
}

}  // namespace qorix::test
