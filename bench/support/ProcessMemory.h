#pragma once

namespace qorix::bench {

/// By how much this process grows while the object lives.
class ProcessMemory {
 public:
  ProcessMemory();

  /// In kilobytes, at the largest so far. The kernel counts in steps of some 64 KB.
  double peakGrowth() const;

 private:
  double before_ = 0;
};

}  // namespace qorix::bench
