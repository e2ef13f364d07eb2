#pragma once

namespace support {

// Which of the compiler's sanitizers this build runs under: g++ and clang++ tell it in ways of their own.

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kUnderAddressSanitizer = true;
#elif defined(__has_feature)
inline constexpr bool kUnderAddressSanitizer = __has_feature(address_sanitizer);
#else
inline constexpr bool kUnderAddressSanitizer = false;
#endif

/// Whether it is one that keeps notes on all memory in an address space far above the machine's own.
#if defined(__SANITIZE_THREAD__)
inline constexpr bool kHasShadowMemory = true;
#elif defined(__has_feature)
inline constexpr bool kHasShadowMemory =
    kUnderAddressSanitizer || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer);
#else
inline constexpr bool kHasShadowMemory = kUnderAddressSanitizer;
#endif

}  // namespace support
