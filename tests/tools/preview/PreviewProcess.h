#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/ChildProcess.h"

namespace qorix::test {

/// One run of qorix-preview.
class PreviewProcess : public ChildProcess {
 public:
  /// A line of its standard output: "HH:MM:SS.mmm KIND: TEXT".
  struct Line {
    std::string kind;
    std::string text;
  };

  /// `environment`: what precedes the program, as for env(1): "-u", "DISPLAY".
  explicit PreviewProcess(const std::vector<std::string>& arguments,
                          const std::vector<std::string>& environment = {});

  /// Waits for the line of that kind with that number (1 is the first), also one that was printed
  /// before, and answers its text.
  std::optional<std::string> waitForLine(std::string_view kind, int number = 1,
                                         double seconds = kPatience);

  /// Waits for a line of that kind whose text holds `part`; false when there is none in time.
  bool waitForText(std::string_view kind, std::string_view part, double seconds = kPatience);

  const std::vector<Line>& lines() const { return lines_; }
  std::vector<std::string> texts(std::string_view kind) const;

  /// Waits for the end; the exit status, or -1 when it did not end in time or was killed.
  int exitStatus();

 protected:
  void takeLine(const std::string& line) override;

 private:
  std::vector<Line> lines_;
};

}  // namespace qorix::test
