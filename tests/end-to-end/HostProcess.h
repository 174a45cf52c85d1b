#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorix::test {

inline constexpr double kPatience = 40;  // seconds, for what must happen

/// One run of the sample host, as its user would start it. Killed in the end if it still runs.
class HostProcess {
 public:
  explicit HostProcess(const std::vector<std::string>& arguments);
  ~HostProcess();
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;

  /// Waits for the first event of that name, also one that was printed before.
  std::optional<nlohmann::json> waitForEvent(std::string_view name, double seconds = kPatience);

  /// Waits for a log line that ends in `ending`; false when there is none in time.
  bool waitForLog(std::string_view ending, double seconds = kPatience);

  /// Reads what the host prints until it has ended or `seconds` have passed; true when it has
  /// ended.
  bool waitForEnd(double seconds = kPatience);

  /// Reads what the host prints for that long, or until it has ended.
  void listen(double seconds) { waitForEnd(seconds); }

  void sendSignal(int signal) const;

  /// How the process ended, as from waitpid; call it after `waitForEnd`.
  int status();

  const std::vector<nlohmann::json>& events() const { return events_; }
  int countEvents(std::string_view name) const;

  /// The messages logged, without time stamp and process name.
  const std::vector<std::string>& log() const { return log_; }
  int countLog(std::string_view part) const;

 private:
  struct Pipe {
    int descriptor = -1;
    std::string partialLine = {};
  };

  bool waitFor(const std::function<bool()>& condition, double seconds);
  void readSome(double seconds);
  static void takeLines(Pipe& pipe, const std::function<void(const std::string&)>& take);

  pid_t process_ = -1;
  int end_ = -1;  // readable when the process has ended
  bool hasEnded_ = false;
  Pipe output_;
  Pipe errors_;
  std::optional<int> status_;
  std::vector<nlohmann::json> events_;
  std::vector<std::string> log_;
};

}  // namespace qorix::test
