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
  bool fIsNamed;  // counted by name, else all of them together
  Extent fExtent;
};

// In the order of KAPResource.
inline constexpr std::array<ResourceText, kResources> kResourceTexts = {{
    {"nothing", false, Extent::kNone},
    {"atom", true, Extent::kNone},  // the number is that of references
    {"error", true, Extent::kReferences},
    {"container", true, Extent::kReferences},
    {"blocks", false, Extent::kBytes},
    {"shared buffers", false, Extent::kBytes},
    {"open file", true, Extent::kNone},
    {"cache identities", false, Extent::kReferences},
    {"cached items", false, Extent::kCost},
    {"cache sets", false, Extent::kReferences},
    {"cache purges", false, Extent::kNone},
    {"data sinks", false, Extent::kReferences},
    {"progress objects", false, Extent::kReferences},
}};
static_assert(std::ranges::all_of(kResourceTexts, [](const auto& text) { return text.fLabel; }),
              "a resource has no text");

constexpr const ResourceText& TextOf(KAPResource resource) {
  return kResourceTexts[static_cast<std::size_t>(resource)];
}

}  // namespace KAPHost
