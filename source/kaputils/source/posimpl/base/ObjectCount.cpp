// SPDX-License-Identifier: MIT
#include "posimpl/base/ObjectCount.h"

namespace NPOSObjectImpl {

// Slots are never given up, so a thread that has one meets it before any free slot.
void ObjectCount::AddElsewhere(const void* thread, Count count) noexcept {
  const std::size_t first = FirstSlot(thread);
  for (std::size_t i = 0; i < kNear; ++i) {
    Slot& slot = fSlots[(first + i) % kSlots];
    const void* owner = slot.fThread.load(std::memory_order_relaxed);
    if (owner && owner != thread) continue;
    if (owner || slot.fThread.compare_exchange_strong(owner, thread, std::memory_order_relaxed)) {
      return AddInOwn(slot, count);
    }
  }
  (fShared.*count).fetch_add(1, std::memory_order_release);
}

std::uint64_t ObjectCount::Sum(Count count) const noexcept {
  std::uint64_t sum = (fShared.*count).load(std::memory_order_acquire);
  for (const Slot& slot : fSlots) sum += (slot.*count).load(std::memory_order_acquire);
  return sum;
}

std::uint64_t ObjectCount::Live() const noexcept {
  const std::uint64_t deleted = Sum(&Slot::fDeleted);
  return Sum(&Slot::fMade) - deleted;
}

}  // namespace NPOSObjectImpl
