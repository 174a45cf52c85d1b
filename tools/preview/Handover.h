#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qorix::tools::preview {

/// What a run of the program leaves to the one that takes its place.
struct Handover {
  std::string text;  // the document to show
  // The window: its place on the screen and its size.
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  std::int64_t quitAt = 0;  // on the monotonic clock, microseconds; 0: stay
};

/// Starts the program anew in this process, with the same command line: the library's singletons
/// and its pop-up window last as long as a program runs, so that only a new run shows another
/// document as a host would. Answers only when that fails, with the system's error number.
int startAnew(char** argv, const Handover& handover);

/// What the run before this one has left; nothing when this is the first.
std::optional<Handover> takeHandover();

}  // namespace qorix::tools::preview
