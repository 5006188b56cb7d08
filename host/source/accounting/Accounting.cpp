#include "accounting/Accounting.h"

#include <pthread.h>

#include <memory>
#include <mutex>
#include <new>

namespace KAPHost {

namespace {

// Nothing here is ever destroyed: static objects of components may call the host until the very
// end.
constinit std::mutex gMutex;
constinit IntrusiveList<ThreadAccount> gAccounts;
constinit std::array<Holding, kSlots> gRetired{};
// Counted in by all threads for which there is no memory.
constinit std::array<ThreadAccount::Entry, kSlots> gSpare;

void AddEntry(Holding& sum, const ThreadAccount::Entry& entry) noexcept {
  sum.fNumber = WrappingSum(sum.fNumber, entry.fNumber.load(std::memory_order_relaxed));
  sum.fExtent = WrappingSum(sum.fExtent, entry.fExtent.load(std::memory_order_relaxed));
}

// When a thread ends, adds its numbers to those of the threads that have ended. Destructors that
// run still later make another account, which retires in the next round.
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

// Has Retire called when the thread ends. A thread_local object with a destructor would do, but its
// registration ends the process when it has no memory. False when out of memory or keys.
bool RetireAtEnd(ThreadAccount* account) noexcept {
  struct Key {
    pthread_key_t fKey;
    bool fIsMade;
  };
  static const Key key = [] {
    pthread_key_t made{};
    const bool isMade = pthread_key_create(&made, &Retire) == 0;
    return Key{made, isMade};
  }();
  return key.fIsMade && pthread_setspecific(key.fKey, account) == 0;
}

ThreadAccount* NewAccount() noexcept {
  std::unique_ptr<ThreadAccount> account(new (std::nothrow) ThreadAccount);
  if (!account || !RetireAtEnd(account.get())) return nullptr;
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

Holding TotalOf(unsigned slot) noexcept {
  const std::lock_guard lock(gMutex);
  Holding sum = gRetired[slot];
  AddEntry(sum, gSpare[slot]);
  gAccounts.ForEach([&](const ThreadAccount& account) { AddEntry(sum, account.fEntries[slot]); });
  return sum;
}

}  // namespace KAPHost
