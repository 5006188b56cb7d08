// SPDX-License-Identifier: MIT
#include "heap/Page.h"

#include <algorithm>

namespace KAPHost {

// As many blocks at a time as fit a page of the system, so that memory is touched only when needed.
bool Page::Extend() noexcept {
  constexpr std::size_t kStep = 4096;
  const std::size_t count =
      std::min<std::size_t>(kStep / fBlockSize, (kPageSize - fFresh) / fBlockSize);
  if (count == 0) return false;
  unsigned char* const first = Start() + fFresh;
  fFresh += static_cast<std::uint32_t>(count * fBlockSize);
  for (std::size_t i = count; i-- > 0;) {
    fFree = new (first + i * fBlockSize) FreeBlock{fFree};
  }
  return true;
}

void Page::Collect() noexcept {
  FreeBlock* const first = fReturned.exchange(nullptr, std::memory_order_acq_rel);
  std::uint32_t count = 1;
  FreeBlock* last = first;
  for (; last->fNext; last = last->fNext) ++count;
  last->fNext = fFree;
  fFree = first;
  fUsed -= count;
}

}  // namespace KAPHost
