#pragma once

#include <cstdlib>

namespace qorix::test {

/// How often a test repeats what depends on chance or on time: `few` in the suite, `many` under
/// `./run soak`. The test's target is added with SOAK.
inline int rounds(int few, int many) { return std::getenv("QORIX_SOAK") == nullptr ? few : many; }

}  // namespace qorix::test
