#pragma once

#include <cstdint>
#include <string>

#include "definition/differential/SecondReader.h"

namespace qorix {

/// A document and the machine that reads it. Most are sound, others have faults: wrong elements and
/// values, and text that is no XML.
struct RandomDocument {
  Machine machine;
  std::string text;
};

RandomDocument randomDocument(std::uint64_t seed);

}  // namespace qorix
