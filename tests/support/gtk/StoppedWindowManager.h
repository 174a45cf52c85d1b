#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace qorix::test {

/// Stops the window manager of this test's display for as long as it lives.
class StoppedWindowManager {
 public:
  StoppedWindowManager() {
    EXPECT_GT(process_, 0);
    send(SIGSTOP);
  }
  ~StoppedWindowManager() { goOn(); }
  StoppedWindowManager(const StoppedWindowManager&) = delete;
  StoppedWindowManager& operator=(const StoppedWindowManager&) = delete;

  void goOn() const { send(SIGCONT); }

 private:
  void send(int signal) const {
    if (process_ > 0) {
      kill(process_, signal);
    }
  }

  static pid_t find() {
    const std::string self = std::to_string(getpid());
    std::ifstream children("/proc/self/task/" + self + "/children");
    pid_t child = 0;
    while (children >> child) {
      std::string name;
      std::ifstream("/proc/" + std::to_string(child) + "/comm") >> name;
      if (name == "openbox") {
        return child;
      }
    }
    return 0;
  }

  const pid_t process_ = find();
};

}  // namespace qorix::test
