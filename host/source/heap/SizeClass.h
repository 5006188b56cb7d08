// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cstddef>

namespace KAPHost {

// The sizes of small blocks: multiples of 16 up to 256, then four for each doubling up to 1024.
// Rounding up wastes at most a fifth. All are multiples of 16, so blocks that follow each other
// from an aligned start are aligned. Larger blocks are malloc's, which costs them little.

inline constexpr std::size_t kLargestSmall = 1024;
inline constexpr unsigned kSizeClasses = 24;

// The class of the smallest size that holds `size` bytes, 1 to kLargestSmall.
constexpr unsigned SizeClassOf(std::size_t size) noexcept {
  if (size <= 256) return static_cast<unsigned>((size - 1) / 16);
  const auto doubling = static_cast<unsigned>(std::bit_width(size - 1)) - 9;
  return 12 + 4 * doubling + static_cast<unsigned>((size - 1) >> (6 + doubling));
}

constexpr std::size_t SizeOfClass(unsigned sizeClass) noexcept {
  if (sizeClass < 16) return 16 * (std::size_t{sizeClass} + 1);
  return (std::size_t{5} + sizeClass % 4) << (6 + (sizeClass - 16) / 4);
}

static_assert([] {
  for (std::size_t size = 1; size <= kLargestSmall; ++size) {
    const unsigned found = SizeClassOf(size);
    if (found >= kSizeClasses || SizeOfClass(found) < size || SizeOfClass(found) % 16 != 0 ||
        (found > 0 && SizeOfClass(found - 1) >= size)) {
      return false;
    }
  }
  return true;
}());

// What a page is used for: blocks of one class of sizes, of one kind. Atoms have pages of their
// own: threads share them, and an object of one thread in the cache line of a shared atom would
// make every change of the object wait for the other threads.
enum class BlockKind : unsigned { kOwn, kShared };

inline constexpr unsigned kPageUses = 2 * kSizeClasses;

constexpr unsigned PageUseOf(BlockKind kind, std::size_t size) noexcept {
  return static_cast<unsigned>(kind) * kSizeClasses + SizeClassOf(size);
}

constexpr std::size_t BlockSizeOf(unsigned pageUse) noexcept {
  return SizeOfClass(pageUse % kSizeClasses);
}

}  // namespace KAPHost
