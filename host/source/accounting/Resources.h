// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "kaphost/Snapshot.h"

namespace KAPHost {

inline constexpr std::size_t kResources = static_cast<std::size_t>(KAPResource::kCount);

// Sums wrap: components state costs and sizes whose total may not fit a long.
inline long WrappingSum(long a, long b) noexcept {
  long sum = 0;
  static_cast<void>(__builtin_add_overflow(a, b, &sum));
  return sum;
}

// What a line of the leak report shows besides the number of things.
enum class Extent { kNone, kReferences, kBytes, kCost };

struct ResourceText {
  const char* fLabel;
  const char* fNoun;  // one of them, in messages
  bool fIsNamed;      // counted by name, else all of them together
  Extent fExtent;
};

// In the order of KAPResource.
inline constexpr std::array<ResourceText, kResources> kResourceTexts = {{
    {"nothing", "object", false, Extent::kNone},
    {"atom", "atom", true, Extent::kNone},  // the number is that of references
    {"error", "error", true, Extent::kReferences},
    {"container", "container", true, Extent::kReferences},
    {"blocks", "block", false, Extent::kBytes},
    {"shared buffers", "buffer", false, Extent::kBytes},
    {"open file", "file", true, Extent::kNone},
    {"cache identities", "cache identity", false, Extent::kReferences},
    {"cached items", "cached item", false, Extent::kCost},
    {"cache sets", "cache set", false, Extent::kReferences},
    {"cache purges", "cache purge", false, Extent::kNone},
    {"data sinks", "data sink", false, Extent::kReferences},
    {"progress objects", "progress object", false, Extent::kReferences},
}};
static_assert(std::ranges::all_of(kResourceTexts, [](const auto& text) { return text.fLabel; }),
              "a resource has no text");

constexpr const ResourceText& TextOf(KAPResource resource) {
  return kResourceTexts[static_cast<std::size_t>(resource)];
}

}  // namespace KAPHost
