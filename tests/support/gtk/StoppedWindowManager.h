#pragma once

#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "support/gtk/GtkTest.h"

namespace qorix::test {

/// Stops the window manager of this test's display for as long as it lives.
class StoppedWindowManager {
 public:
  StoppedWindowManager()
      : process_(
            std::atoi(run({"pgrep", "-P", std::to_string(getpid()), "-x", "openbox"}).c_str())) {
    EXPECT_GT(process_, 0);
    kill(process_, SIGSTOP);
  }
  ~StoppedWindowManager() { goOn(); }
  StoppedWindowManager(const StoppedWindowManager&) = delete;
  StoppedWindowManager& operator=(const StoppedWindowManager&) = delete;

  void goOn() const { kill(process_, SIGCONT); }

 private:
  const pid_t process_;
};

}  // namespace qorix::test
