#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tools/common/display/PrivateDisplay.h"

namespace qorix::test {

struct VirtualDisplayOptions {
  int width = 1280;
  int height = 1024;
  /// Monitors of equal size, side by side.
  int monitors = 1;
  bool hasWindowManager = true;
};

/// An X server without hardware of our own, with a window manager on it unless told otherwise, and
/// private folders for whatever is run on it. Its processes end with it, and at the latest with the
/// thread that started it.
class VirtualDisplay {
 public:
  /// Returns when windows can be shown on it. Null, after a line on standard error, when it
  /// cannot be started.
  static std::unique_ptr<VirtualDisplay> start(const VirtualDisplayOptions& options = {});
  ~VirtualDisplay();
  VirtualDisplay(const VirtualDisplay&) = delete;
  VirtualDisplay& operator=(const VirtualDisplay&) = delete;

  /// The display's name, ":7".
  const std::string& name() const;

  /// The folder below which programs find their private XDG folders; removed in the end.
  const std::filesystem::path& folder() const { return folder_; }

  /// Makes this process, and those that it starts from now on, use the display and the folders.
  void useInThisProcess() const;

 private:
  VirtualDisplay() = default;
  bool divideIntoMonitors(const VirtualDisplayOptions& options) const;

  std::filesystem::path folder_;
  std::unique_ptr<tools::PrivateDisplay> server_;
};

}  // namespace qorix::test
