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
  /// A new one of that size in pixels, without a window manager. Null when there is no Xvfb or it
  /// does not start.
  static std::unique_ptr<PrivateDisplay> start(int width, int height);
  ~PrivateDisplay();
  PrivateDisplay(const PrivateDisplay&) = delete;
  PrivateDisplay& operator=(const PrivateDisplay&) = delete;

  /// The display's name, ":7".
  const std::string& name() const { return name_; }

  /// Returns when windows are managed on it; false when there is no window manager or it does not
  /// start. `home` is its home folder; the default cannot hold anything, so that nothing of the
  /// user's changes how it behaves.
  bool startWindowManager(const std::string& home = "/dev/null");

  /// Makes this process, and those that it starts from now on, use the display and nothing else of
  /// a desktop.
  void useInThisProcess() const;

 private:
  PrivateDisplay() = default;
  bool startServer(int width, int height);

  std::string name_;
  std::vector<pid_t> children_;  // in the order of their start
};

}  // namespace qorix::tools
