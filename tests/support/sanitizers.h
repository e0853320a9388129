/// @file
/// Which sanitizer this is built with, for the few tests that need to know.
#pragma once

// GCC defines a name for each, clang answers questions.
#if defined(__has_feature)
#define ZELM_HAS_FEATURE(feature) __has_feature(feature)
#else
#define ZELM_HAS_FEATURE(feature) 0
#endif

namespace Zelm::Testing {

#if defined(__SANITIZE_ADDRESS__) || ZELM_HAS_FEATURE(address_sanitizer)
constexpr bool underAddressSanitizer = true;
#else
constexpr bool underAddressSanitizer = false;
#endif

#if defined(__SANITIZE_THREAD__) || ZELM_HAS_FEATURE(thread_sanitizer)
constexpr bool underThreadSanitizer = true;
#else
constexpr bool underThreadSanitizer = false;
#endif

/// A sanitizer's runtime replaces dlopen, so that the core library's RUNPATH counts for nothing there and
/// LD_LIBRARY_PATH has to stand in for it. It keeps what was freed, too.
constexpr bool underSanitizer = underAddressSanitizer || underThreadSanitizer;

}  // namespace Zelm::Testing

#undef ZELM_HAS_FEATURE
