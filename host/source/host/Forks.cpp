// SPDX-License-Identifier: MIT
#include "host/Forks.h"

#include <pthread.h>

#include "accounting/Accounting.h"
#include "atoms/AtomCredits.h"
#include "atoms/AtomTable.h"
#include "heap/Heap.h"

namespace KAPHost {

namespace {

// In the order in which threads nest them.
void LockAll() noexcept {
  AtomCredits::Mutex().lock();
  gAtoms.Lock();
  LockPages();
  AccountsMutex().lock();
}

void UnlockAll() noexcept {
  AccountsMutex().unlock();
  UnlockPages();
  gAtoms.Unlock();
  AtomCredits::Mutex().unlock();
}

}  // namespace

// Without memory for the handlers, only forks of processes with threads are at risk.
void SurviveForks() noexcept {
  [[maybe_unused]] static const int registered = pthread_atfork(&LockAll, &UnlockAll, &UnlockAll);
}

}  // namespace KAPHost
