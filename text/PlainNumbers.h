#pragma once

#include <clocale>

namespace qorix {

/// While one lives, the C library reads and writes this thread's numbers with a point, whatever
/// locale the host runs under; other threads notice nothing. For calls of libraries that leave
/// numbers to the C library. Any thread; ends on the thread that made it.
class PlainNumbers {
 public:
  PlainNumbers();
  ~PlainNumbers();
  PlainNumbers(const PlainNumbers&) = delete;
  PlainNumbers& operator=(const PlainNumbers&) = delete;

 private:
  const locale_t former_;
};

}  // namespace qorix
