#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorix::test {

inline constexpr double kPatience = 40;  // seconds, for what must happen

/// One run of a program, started as its user would. The destructor kills it if it still runs.
class ChildProcess {
 public:
  /// `command` is the program, a path, and its arguments.
  explicit ChildProcess(const std::vector<std::string>& command);
  virtual ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Waits for a log line that ends in `ending`. Returns false if there is none in time.
  bool waitForLog(std::string_view ending, double seconds = kPatience);

  /// Reads what the program prints until it ends or `seconds` have passed. Returns true if it has
  /// ended.
  bool waitForEnd(double seconds = kPatience);

  /// Reads what the program prints for `seconds`, or until it ends.
  void listen(double seconds) { waitForEnd(seconds); }

  void sendSignal(int signal) const;

  /// How the process ended, as from waitpid; call it after `waitForEnd`.
  int status();

  /// The messages logged, without time stamp and process name.
  const std::vector<std::string>& log() const { return log_; }
  int countLog(std::string_view part) const;

  pid_t process() const { return process_; }

 protected:
  /// Receives a line of the program's standard output. Not called before the constructors have run.
  virtual void takeLine(const std::string& line) = 0;

  /// Reads what the program prints until the condition holds. Returns false if it does not in time.
  bool waitFor(const std::function<bool()>& condition, double seconds);

 private:
  struct Pipe {
    int descriptor = -1;
    std::string partialLine = {};
  };

  void readSome(double seconds);
  static void takeLines(Pipe& pipe, const std::function<void(const std::string&)>& take);

  pid_t process_ = -1;
  int end_ = -1;  // readable when the process has ended
  bool hasEnded_ = false;
  Pipe output_;
  Pipe errors_;
  std::optional<int> status_;
  std::vector<std::string> log_;
};

}  // namespace qorix::test
