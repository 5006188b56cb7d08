// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace KAPHost {

// The thread tags that end the contracts of the declared methods.
enum class ThreadTag : unsigned char { kAny, kSharedRead, kExclusive, kBinding };

struct ThreadTagRow {
  std::string_view fInterface;
  std::string_view fMethod;
  ThreadTag fTag;

  friend constexpr bool operator<(const ThreadTagRow& a, const ThreadTagRow& b) {
    return a.fInterface != b.fInterface ? a.fInterface < b.fInterface : a.fMethod < b.fMethod;
  }
};

}  // namespace KAPHost
