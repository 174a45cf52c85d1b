#pragma once

#include <utility>

#include <qorix/platform/Error.h>

#include "platform/Guarded.h"

namespace qorix {

/// Calls `attempt`. What it throws is logged, and `fail` is called with an error, so that a source
/// tells its delegate of each attempt. The error is short enough to need no memory.
template <class Attempt, class Fail>
void attemptGuarded(Attempt&& attempt, Fail&& fail) noexcept {
  try {
    attempt();
  } catch (...) {
    logStoppedException();
    callGuarded([&fail] { fail(Error{"exception", 1, ""}); });
  }
}

}  // namespace qorix
