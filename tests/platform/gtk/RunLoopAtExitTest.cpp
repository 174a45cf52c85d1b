#include <unistd.h>

#include <cstdlib>
#include <future>
#include <thread>

#include "support/gtk/GtkTest.h"

namespace qorix::test {

TEST(RunLoopAtExitTest, processEndsThoughAThreadWaitsForTheMainThread) {
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
