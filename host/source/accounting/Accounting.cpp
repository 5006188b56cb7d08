#include "accounting/Accounting.h"

#include <mutex>
#include <new>

namespace KAPHost {

namespace {

// Nothing here is ever destroyed: static objects of components may call the host until the very
// end.
constinit std::mutex gMutex;
constinit IntrusiveList<ThreadAccount> gAccounts;
constinit std::array<Holding, kSlots> gRetired{};
// Written by all threads for which there is no memory; what they count may then be lost.
constinit ThreadAccount gSpare;

void AddEntry(Holding& sum, const ThreadAccount::Entry& entry) noexcept {
  sum.fNumber = WrappingSum(sum.fNumber, entry.fNumber.load(std::memory_order_relaxed));
  sum.fExtent = WrappingSum(sum.fExtent, entry.fExtent.load(std::memory_order_relaxed));
}

// When the thread ends, adds its numbers to those of the threads that have ended. Thread-local
// objects that are destroyed still later get an account that stays.
struct Retirement {
  ~Retirement() {
    ThreadAccount* account = tAccount;
    tAccount = nullptr;
    if (!account) return;
    {
      const std::lock_guard lock(gMutex);
      for (unsigned slot = 0; slot < kSlots; ++slot) {
        AddEntry(gRetired[slot], account->fEntries[slot]);
      }
      gAccounts.Remove(*account);
    }
    delete account;
  }
  bool fArmed = false;
};

constinit thread_local bool tRetirementArmed = false;
thread_local Retirement tRetirement;

}  // namespace

ThreadAccount& NewAccount() noexcept {
  if (!tRetirementArmed) {
    tRetirementArmed = true;
    tRetirement.fArmed = true;  // the first touch is what schedules the destructor
  }
  auto* account = new (std::nothrow) ThreadAccount;
  if (!account) return gSpare;
  const std::lock_guard lock(gMutex);
  gAccounts.Append(*account);
  tAccount = account;
  return *account;
}

Holding TotalOf(unsigned slot) noexcept {
  const std::lock_guard lock(gMutex);
  Holding sum = gRetired[slot];
  AddEntry(sum, gSpare.fEntries[slot]);
  gAccounts.ForEach([&](const ThreadAccount& account) { AddEntry(sum, account.fEntries[slot]); });
  return sum;
}

}  // namespace KAPHost
