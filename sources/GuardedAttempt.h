#pragma once

#include <new>

#include <qorix/platform/Error.h>

#include "platform/Guarded.h"

namespace qorix {

/// Calls `attempt`. What it throws is logged. If there was no memory for it, `fail` is called with
/// an error, so that a source tells its delegate of each attempt; the error is short enough to need
/// none. What else is thrown comes from the delegate, which has been told.
template <class Attempt, class Fail>
void attemptGuarded(Attempt&& attempt, Fail&& fail) noexcept {
  try {
    attempt();
  } catch (const std::bad_alloc&) {
    logStoppedException();
    callGuarded([&fail] { fail(Error{"exception", 1, ""}); });
  } catch (...) {
    logStoppedException();
  }
}

}  // namespace qorix
