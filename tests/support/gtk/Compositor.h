#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/Picture.h"

namespace qorix::test {

/// A Wayland compositor without hardware, and private folders for what runs on it. It ends with the
/// object, and at the latest with the thread that started it.
class Compositor {
 public:
  /// sway draws the decorations of windows; it has outputs of 1280 x 1024 pixels, one for each of
  /// `scales`. Null, after a line on standard error, if it cannot be started.
  static std::unique_ptr<Compositor> startSway(const std::vector<int>& scales);
  /// weston leaves decorations to the programs, and has no keyboard or pointer.
  static std::unique_ptr<Compositor> startWeston();
  ~Compositor();
  Compositor(const Compositor&) = delete;
  Compositor& operator=(const Compositor&) = delete;

  /// Makes this process, and those that it starts from now on, use the compositor.
  void useInThisProcess() const;

 private:
  Compositor();
  bool start(const std::vector<std::string>& command, const std::string& socket);

  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace qorix::test
