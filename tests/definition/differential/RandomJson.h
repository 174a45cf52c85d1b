#pragma once

#include <string>

#include "definition/differential/Random.h"

namespace qorix {

/// A customisation for `host` and others: mostly sound, sometimes with a fault.
std::string randomCustomisation(Random& random, const std::string& host);

}  // namespace qorix
