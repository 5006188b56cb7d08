// SPDX-License-Identifier: MIT
#include "host/Forks.h"

#include <pthread.h>

#include "accounting/Accounting.h"
#include "atoms/AtomCredits.h"
#include "atoms/AtomTable.h"
#include "containers/ContainerTypes.h"
#include "errors/Errors.h"
#include "heap/Heap.h"
#include "streams/OpenFile.h"

namespace KAPHost {

namespace {

// A fork during another thread's call may leave its counts in the child without that call.
//
// In the order in which threads nest them. Snapshots take all of them, hence those of errors and
// files, in which nothing is nested.
void LockAll() noexcept {
  gContainerTypes.Mutex().lock();
  AtomCredits::Mutex().lock();
  gAtoms.Lock();
  LockPages();
  AccountsMutex().lock();
  ErrorsMutex().lock();
  OpenFile::Mutex().lock();
}

void UnlockAll() noexcept {
  OpenFile::Mutex().unlock();
  ErrorsMutex().unlock();
  AccountsMutex().unlock();
  UnlockPages();
  gAtoms.Unlock();
  AtomCredits::Mutex().unlock();
  gContainerTypes.Mutex().unlock();
}

}  // namespace

// Without memory for the handlers, only forks of processes with threads are at risk.
void SurviveForks() noexcept {
  [[maybe_unused]] static const int registered = pthread_atfork(&LockAll, &UnlockAll, &UnlockAll);
}

}  // namespace KAPHost
