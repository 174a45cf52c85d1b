#include "support/ProcessMemory.h"

#include <malloc.h>

#include <fstream>
#include <string>
#include <string_view>

namespace qorix::bench {

namespace {

/// A number of kilobytes from /proc/self/status.
double kilobytes(std::string_view label) {
  std::ifstream lines("/proc/self/status");
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(label)) {
      return std::stod(line.substr(label.size()));
    }
  }
  return 0;
}

}  // namespace

ProcessMemory::ProcessMemory() {
  ::malloc_trim(0);  // what was freed before must not be used unseen
  before_ = kilobytes("VmRSS:");
  std::ofstream("/proc/self/clear_refs") << "5";  // the kernel's peak starts anew
}

double ProcessMemory::peakGrowth() const { return kilobytes("VmHWM:") - before_; }

}  // namespace qorix::bench
