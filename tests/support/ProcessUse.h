#pragma once

#include <ostream>
#include <string>

namespace qorix::test {

/// What this process and those that it has started use now.
struct ProcessUse {
  long kilobytes = 0;  // of memory that this process alone has written
  long descriptors = 0;
  long threads = 0;
  long webProcesses = 0;
  long webKilobytes = 0;  // of all processes of the engine

  static ProcessUse now();
};

std::ostream& operator<<(std::ostream& out, const ProcessUse& use);

}  // namespace qorix::test
