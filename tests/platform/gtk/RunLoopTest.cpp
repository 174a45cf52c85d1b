#include <future>
#include <thread>

#include "platform/gtk/GtkTest.h"

namespace qorix::test {

namespace {

class GtkRunLoop : public GtkTest {
 protected:
  RunLoop& loop = *platform().mainRunLoop;
};

gboolean popUp(GtkWidget* /*widget*/, GdkEvent* press, gpointer menu) {
  gtk_menu_popup_at_pointer(GTK_MENU(menu), press);
  return TRUE;
}

// Opens a menu the way that its user does.
GtkWidget* popUpMenu(const HostWindow& host) {
  GtkWidget* menu = gtk_menu_new();
  gtk_menu_shell_append(GTK_MENU_SHELL(menu), gtk_menu_item_new_with_label("Item"));
  gtk_widget_show_all(menu);
  GtkWidget* area = gtk_bin_get_child(GTK_BIN(host.overlay()));
  gtk_menu_attach_to_widget(GTK_MENU(menu), area, nullptr);
  g_signal_connect(area, "button-press-event", G_CALLBACK(popUp), menu);
  const GdkRectangle place = host.overlayOnScreen();
  run({"xdotool", "mousemove", std::to_string(place.x + 50), std::to_string(place.y + 50), "click",
       "3"});
  EXPECT_TRUE(waitFor([&] { return gtk_grab_get_current() == menu; })) << "no menu";
  return menu;
}

}  // namespace

TEST_F(GtkRunLoop, delayedPerformWaitsForAMenuAndDispatchDoesNot) {
  HostWindow host(300, 200);
  gtk_widget_add_events(gtk_bin_get_child(GTK_BIN(host.overlay())), GDK_BUTTON_PRESS_MASK);
  host.show();
  GtkWidget* menu = popUpMenu(host);
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
  EXPECT_TRUE(waitFor([&] { return later; }));
  EXPECT_TRUE(dispatched);
  EXPECT_FALSE(performed);
  gtk_menu_popdown(GTK_MENU(menu));
  EXPECT_TRUE(waitFor([&] { return performed; }, 1));
}

TEST_F(GtkRunLoop, delayedPerformFiresInAModalDialog) {
  HostWindow host(300, 200);
  host.show();
  GtkWidget* dialog = gtk_message_dialog_new(host.window(), GTK_DIALOG_MODAL, GTK_MESSAGE_INFO,
                                             GTK_BUTTONS_OK, "Wait");
  std::vector<int> order;
  loop.performAfterDelay(0.05, [&] { order.push_back(1); });
  loop.performAfterDelay(0.05, [&] {
    order.push_back(2);
    gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_OK);
  });
  EXPECT_EQ(gtk_dialog_run(GTK_DIALOG(dialog)), GTK_RESPONSE_OK);
  EXPECT_EQ(order, (std::vector{1, 2}));
  gtk_widget_destroy(dialog);
}

TEST_F(GtkRunLoop, tasksGoOnWhileATaskRunsAModalDialog) {
  HostWindow host(300, 200);
  host.show();
  GtkWidget* dialog = gtk_message_dialog_new(host.window(), GTK_DIALOG_MODAL, GTK_MESSAGE_INFO,
                                             GTK_BUTTONS_OK, "Wait");
  int response = 0;
  loop.dispatchAsync([&] { response = gtk_dialog_run(GTK_DIALOG(dialog)); });
  loop.dispatchAsync([&] { gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_OK); });
  EXPECT_TRUE(waitFor([&] { return response != 0; }));
  EXPECT_EQ(response, GTK_RESPONSE_OK);
  gtk_widget_destroy(dialog);
}

TEST_F(GtkRunLoop, tasksWaitWhileAScriptIsEvaluatedAndTheLoopDoesNotSpin) {
  Page page;
  page.loadAndWait("<p>loop</p>");
  bool ran = false;
  bool ranMeanwhile = true;
  int iterations = 0;
  loop.performAfterDelay(0, [&] { ran = true; });
  loop.dispatchAsync([&] { ran = true; });
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
  ranMeanwhile = ran;
  EXPECT_FALSE(ranMeanwhile);
  EXPECT_EQ(iterations, 1) << "the host's own sources are served";
  EXPECT_TRUE(waitFor([&] { return ran; }));
}

TEST(GtkRunLoopAtTheEnd, processEndsThoughAThreadWaitsForTheMainThread) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";  // GTK has threads, which no fork survives
  EXPECT_EXIT(
      {
        gtk::install({.bundleIdentifier = "com.example.host"});
        std::promise<void> started;
        std::thread([&started] {
          started.set_value();
          platform().mainRunLoop->performAndWait([] { _exit(9); });
        }).detach();
        started.get_future().wait();
        alarm(20);
        exit(0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace qorix::test
