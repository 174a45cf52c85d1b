#pragma once

namespace qorix::test {

/// Replaces operator new in the test program and in the libraries that it uses. Any thread.

/// From now on `successes` allocations succeed, then `failures` fail, and the rest succeeds.
void failAllocations(long successes, long failures);

/// Whether an allocation has failed since. All succeed from now on.
bool stopFailingAllocations();

/// How many allocations live.
long liveAllocations();

}  // namespace qorix::test
