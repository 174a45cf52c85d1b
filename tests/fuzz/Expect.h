#pragma once

#include <cstdio>
#include <cstdlib>

namespace qorix::fuzz {

/// Ends the process if a promise is broken: the fuzzer then keeps the input.
inline void expect(bool isKept, const char* promise) {
  if (!isKept) {
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
  }
}

}  // namespace qorix::fuzz
