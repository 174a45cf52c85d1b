#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qorix::tools::preview {

/// What a run of the program passes to the next one.
struct Handover {
  std::string text;  // the document to show
  // The window: its place on the screen and its size.
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  std::int64_t quitAt = 0;  // on the monotonic clock, microseconds; 0: stay
};

/// Starts the program again in this process, with the same command line. The library's singletons
/// and its pop-up window last as long as a program, so only a new run shows another document as a
/// host would. Returns only if that fails, with the system's error number.
int startAnew(char** argv, const Handover& handover);

/// What the run before this one has passed on; nullopt in the first run.
std::optional<Handover> takeHandover();

}  // namespace qorix::tools::preview
