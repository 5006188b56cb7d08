// SPDX-License-Identifier: MIT
#include "checks/ThreadTags.h"

#include <algorithm>
#include <iterator>

#include "checks/ThreadTagRows.h"

namespace KAPHost {

static_assert(std::is_sorted(std::begin(kThreadTagRows), std::end(kThreadTagRows)));

ThreadTag ThreadTagOf(const char* interfaceName, const char* methodName) noexcept {
  const ThreadTagRow wanted{interfaceName, methodName, ThreadTag::kAny};
  const auto* const end = std::end(kThreadTagRows);
  const auto* const row = std::lower_bound(std::begin(kThreadTagRows), end, wanted);
  return row != end && !(wanted < *row) ? row->fTag : ThreadTag::kAny;
}

}  // namespace KAPHost
