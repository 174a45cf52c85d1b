#include "tools/preview/Lines.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <string>

#include "platform/linux/StandardErrorLog.h"

namespace qorix::tools::preview {

void printLine(std::string_view kind, std::string_view text) {
  timespec now{};
  tm local{};
  clock_gettime(CLOCK_REALTIME, &now);
  localtime_r(&now.tv_sec, &local);
  std::array<char, 16> time{};
  std::strftime(time.data(), time.size(), "%H:%M:%S", &local);
  const std::string shown = escapedForLog(text);
  std::printf("%s.%03ld %.*s: %s\n", time.data(), now.tv_nsec / 1'000'000,
              static_cast<int>(kind.size()), kind.data(), shown.c_str());
  std::fflush(stdout);
}

}  // namespace qorix::tools::preview
