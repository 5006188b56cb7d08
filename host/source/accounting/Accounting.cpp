// SPDX-License-Identifier: MIT
#include "accounting/Accounting.h"

#include <memory>
#include <mutex>
#include <new>

#include "base/Counting.h"
#include "base/ThreadEnd.h"

namespace KAPHost {

namespace {

// Nothing here is ever destroyed: static objects of components may call the host until the very
// end.
constinit std::mutex gMutex;
constinit IntrusiveList<ThreadAccount> gAccounts;
constinit std::array<Holding, kSlots> gRetired{};
// Shared by the threads whose own counters found no memory.
constinit std::array<ThreadAccount::Entry, kSlots> gSpare;

void AddEntry(Holding& sum, const ThreadAccount::Entry& entry) noexcept {
  sum.fNumber = WrappingSum(sum.fNumber, entry.fNumber.load(std::memory_order_relaxed));
  sum.fExtent = WrappingSum(sum.fExtent, entry.fExtent.load(std::memory_order_relaxed));
}

// When a thread ends, adds its numbers to those of the threads that have ended.
void Retire(void* ended) noexcept {
  auto* const account = static_cast<ThreadAccount*>(ended);
  tAccount = nullptr;
  {
    const std::lock_guard lock(gMutex);
    for (unsigned slot = 0; slot < kSlots; ++slot) {
      AddEntry(gRetired[slot], account->fEntries[slot]);
    }
    gAccounts.Remove(*account);
  }
  delete account;
}

ThreadAccount* NewAccount() noexcept {
  std::unique_ptr<ThreadAccount> account(new (std::nothrow) ThreadAccount);
  if (!account || !CallAtThreadEnd<&Retire>(account.get())) return nullptr;
  const std::lock_guard lock(gMutex);
  gAccounts.Append(*account);
  return account.release();
}

}  // namespace

void CountFirst(unsigned slot, long number, long extent) noexcept {
  tAccount = NewAccount();
  if (tAccount) return Count(slot, number, extent);
  gSpare[slot].fNumber.fetch_add(number, std::memory_order_relaxed);
  gSpare[slot].fExtent.fetch_add(extent, std::memory_order_relaxed);
}

std::mutex& AccountsMutex() noexcept { return gMutex; }

Holding TotalOf(unsigned slot) noexcept {
  const ThreadLock lock(gMutex);
  Holding sum = gRetired[slot];
  AddEntry(sum, gSpare[slot]);
  gAccounts.ForEach([&](const ThreadAccount& account) { AddEntry(sum, account.fEntries[slot]); });
  return sum;
}

}  // namespace KAPHost
