#pragma once

#include <memory>

namespace qorix::test {

/// Claims, for as long as it lives, that a compositing manager runs on an X display and that its
/// window manager knows of shadows that programs draw. Only then does GTK draw decorations itself
/// (GTK_CSD=1). What is drawn is shown as it is without a compositing manager: shadows are black.
class CompositedDisplay {
 public:
  /// `name` is the display's, ":7".
  explicit CompositedDisplay(const char* name);
  ~CompositedDisplay();
  CompositedDisplay(const CompositedDisplay&) = delete;
  CompositedDisplay& operator=(const CompositedDisplay&) = delete;

 private:
  struct Connection;
  std::unique_ptr<Connection> connection_;
};

}  // namespace qorix::test
