#include "support/FailingMemory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr long kNever = std::numeric_limits<long>::max();

std::atomic<long> successesLeft = kNever;
std::atomic<long> failuresLeft = 0;
std::atomic<bool> hasFailed = false;
std::atomic<long> live = 0;

bool isToFail() {
  if (successesLeft.load() == kNever || successesLeft.fetch_sub(1) > 0 ||
      failuresLeft.fetch_sub(1) <= 0) {
    return false;
  }
  hasFailed = true;
  return true;
}

void* counted(void* memory) {
  live += memory == nullptr ? 0 : 1;
  return memory;
}

void* allocate(std::size_t size) noexcept {
  return isToFail() ? nullptr : counted(std::malloc(size == 0 ? 1 : size));
}

void* allocateAligned(std::size_t size, std::align_val_t alignment) noexcept {
  const auto unit = static_cast<std::size_t>(alignment);
  return isToFail() ? nullptr : counted(std::aligned_alloc(unit, (size + unit - 1) / unit * unit));
}

void release(void* memory) noexcept {
  live -= memory == nullptr ? 0 : 1;
  std::free(memory);
}

void* orThrow(void* memory) {
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

void* operator new(std::size_t size) { return orThrow(allocate(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return orThrow(allocateAligned(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocateAligned(size, alignment);
}
void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { release(memory); }

namespace qorix::test {

void failAllocations(long successes, long failures) {
  hasFailed = false;
  failuresLeft = failures;
  successesLeft = successes;
}

bool stopFailingAllocations() {
  successesLeft = kNever;
  return hasFailed;
}

long liveAllocations() { return live; }

}  // namespace qorix::test
