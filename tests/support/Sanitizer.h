#pragma once

namespace qorix::test {

/// Whether the tests run under AddressSanitizer or ThreadSanitizer, which take time and memory
/// themselves, and keep memory that was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kIsSanitized =
    __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
inline constexpr bool kIsSanitized = false;
#endif

}  // namespace qorix::test
