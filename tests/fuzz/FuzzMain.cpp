// The entry of one target's program, QORIX_FUZZ_TARGET, under libFuzzer.

#include <cstddef>
#include <cstdint>

#include "fuzz/Targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qorix::fuzz::QORIX_FUZZ_TARGET({reinterpret_cast<const char*>(data), size});
  return 0;
}
