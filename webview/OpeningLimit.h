#pragma once

#include <deque>
#include <string_view>

namespace qorix {

/// How often one page may open addresses outside of it when no act of the user stands behind that:
/// a script that clicks once is let do so, one that clicks without end is not.
class OpeningLimit {
 public:
  static constexpr std::size_t kPerSecond = 2;
  static constexpr std::size_t kPerPage = 5;

  enum class Answer {
    open,
    refuseFirst,  // the limit has just been reached
    refuse,
  };

  /// May the page open another address at the time `now` (seconds, never less than the time
  /// before)? Counts it when it may.
  Answer ask(double now);

 private:
  std::size_t opened_ = 0;
  std::deque<double> times_;  // of the last kPerSecond openings, the oldest first
  bool hasRefused_ = false;
};

/// Whether a page may have addresses of that scheme opened at all, in whatever letter case: not
/// those that hand over files of the user's, or that are a program or a document by themselves.
bool mayBeOpened(std::string_view scheme);

}  // namespace qorix
