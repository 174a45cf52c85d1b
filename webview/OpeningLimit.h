#pragma once

#include <deque>
#include <string_view>

namespace qorix {

/// How often one page may open outside addresses without an act of the user: a script that clicks
/// once may do so, one that clicks without end may not.
class OpeningLimit {
 public:
  static constexpr std::size_t kPerSecond = 2;
  static constexpr std::size_t kPerPage = 5;

  enum class Answer {
    open,
    refuseFirst,  // the limit was reached just now
    refuse,
  };

  /// Whether the page may open another address at the time `now` (seconds, never less than in the
  /// call before). Counts it if it may.
  Answer ask(double now);

 private:
  std::size_t opened_ = 0;
  std::deque<double> times_;  // of the last kPerSecond openings, oldest first
  bool hasRefused_ = false;
};

/// Whether a page may have addresses of that scheme opened at all, in any letter case: not those
/// that give access to the user's files, or that are a program or a document by themselves.
bool mayBeOpened(std::string_view scheme);

}  // namespace qorix
