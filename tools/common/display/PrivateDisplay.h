#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

namespace qorix::tools {

/// An X server without hardware (Xvfb) and the window manager on it (openbox). Both end with the
/// object, and at the latest with the thread that started them.
class PrivateDisplay {
 public:
  /// Starts one of that size in pixels, without a window manager. Returns null if there is no Xvfb
  /// or it does not start.
  static std::unique_ptr<PrivateDisplay> start(int width, int height);
  ~PrivateDisplay();
  PrivateDisplay(const PrivateDisplay&) = delete;
  PrivateDisplay& operator=(const PrivateDisplay&) = delete;

  /// The display's name, ":7".
  const std::string& name() const { return name_; }

  /// Starts the window manager and waits until it manages windows. Returns false if there is none
  /// or it does not start. `home` is its home folder; by default one that cannot hold files, so
  /// that the user's settings change nothing.
  bool startWindowManager(const std::string& home = "/dev/null");

  /// From now on, this process and those that it starts use the display, and nothing else of a
  /// desktop.
  void useInThisProcess() const;

 private:
  PrivateDisplay() = default;
  bool startServer(int width, int height);

  std::string name_;
  std::vector<pid_t> children_;  // in the order of their start
};

}  // namespace qorix::tools
