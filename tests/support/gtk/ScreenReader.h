#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using GDBusConnection = struct _GDBusConnection;
using GTestDBus = struct _GTestDBus;
using GVariant = struct _GVariant;

namespace qorix::test {

/// A session bus of this process's own on which assistive technology finds what is on the display.
/// To be made before GTK is initialised. Ends, with all that was started on it, with the object.
class AssistiveBus {
 public:
  AssistiveBus();
  ~AssistiveBus();
  AssistiveBus(const AssistiveBus&) = delete;
  AssistiveBus& operator=(const AssistiveBus&) = delete;

 private:
  GTestDBus* bus_;
};

/// Something on the display, as a screen reader sees it.
struct Accessible {
  std::string process;
  std::string path;
};

/// What it is, in the numbers of AT-SPI.
enum class Role : std::uint32_t { dialog = 16, frame = 23, panel = 39, link = 88 };

/// Looks at this process's windows through AT-SPI, as a screen reader does. Runs the main loop
/// while it waits, which serves what it asks for.
class ScreenReader {
 public:
  ScreenReader();
  ~ScreenReader();
  ScreenReader(const ScreenReader&) = delete;
  ScreenReader& operator=(const ScreenReader&) = delete;

  /// Waits for something with that role and name, below `place` or anywhere. Fails the test when
  /// there is none.
  Accessible find(Role role, const std::string& name,
                  const std::optional<Accessible>& place = std::nullopt) const;

  std::string description(const Accessible& seen) const;

  /// Does to it what its user usually does: follows a link.
  void activate(const Accessible& seen) const;

  /// Moves the keyboard to it.
  void focus(const Accessible& seen) const;

 private:
  using Answer = std::unique_ptr<GVariant, void (*)(GVariant*)>;

  Answer call(const Accessible& seen, const char* interface, const char* method,
              GVariant* arguments = nullptr) const;
  Answer property(const Accessible& seen, const char* name) const;
  std::string text(const Accessible& seen, const char* name) const;
  std::uint32_t role(const Accessible& seen) const;
  std::vector<Accessible> children(const Accessible& seen) const;
  std::optional<Accessible> look(Role role, const std::string& name, const Accessible& place,
                                 std::string& seen) const;

  GDBusConnection* connection_;
};

}  // namespace qorix::test
