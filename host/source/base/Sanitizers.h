// SPDX-License-Identifier: MIT
#pragma once

// g++ defines macros, clang has features.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KAP_HAS_ADDRESS_SANITIZER
#endif
#if __has_feature(thread_sanitizer)
#define KAP_HAS_THREAD_SANITIZER
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
#define KAP_HAS_ADDRESS_SANITIZER
#endif
#ifdef __SANITIZE_THREAD__
#define KAP_HAS_THREAD_SANITIZER
#endif

#ifdef KAP_HAS_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace KAPHost {

// Whether AddressSanitizer or ThreadSanitizer is built in.
#if defined(KAP_HAS_ADDRESS_SANITIZER) || defined(KAP_HAS_THREAD_SANITIZER)
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

// The leak detector does not find a block whose only address is packed. It is told that such a
// block is not a leak.
inline void HideFromLeakDetector([[maybe_unused]] const void* block) noexcept {
#ifdef KAP_HAS_ADDRESS_SANITIZER
  if (block) __lsan_ignore_object(block);
#endif
}

}  // namespace KAPHost
