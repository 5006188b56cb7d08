// SPDX-License-Identifier: MIT
#include "kap/KAPProcTable.h"

#include <mutex>

#include "kap/TOQWaitMutex.h"
#include "source/kap/KAPBinding.h"

namespace KAP_T_MT {

const unsigned long KAPProcTable::kNeverFresh = ~0UL;
constinit std::atomic<KAPProcTable*> KAPProcTable::fListedTables = nullptr;

namespace {

// One table is loaded at a time: a thread that fetched a procedure before the counter moved must
// not store it after another thread has marked the table as fresh. Recursive, since a host's
// callback may use the runtime; one for all tables, since loads are rare.
constinit TOQWaitMutex gLoading;

}  // namespace

KAPLoadOutcome KAPProcTable::Load() noexcept {
  const std::lock_guard lock(gLoading);
  if (gGetProc) Enlist();
  const KAPLoadOutcome outcome = KAPFetchProcs(
      fEntries, fEntryCount, fInterfaceName,
      [this](std::size_t i, void* proc) { fSlots[i].store(proc, std::memory_order_relaxed); });
  if (outcome == KAPLoadOutcome::kLoaded) fDropped.store(false);
  return outcome;
}

KAPLoadOutcome KAPProcTable::Reload() noexcept {
  if (!gGetProc) return KAPLoadOutcome::kUnavailable;
  const std::lock_guard lock(gLoading);
  if (IsFresh()) return KAPLoadOutcome::kLoaded;  // by another thread
  unsigned long count = 0;
  do {  // until the counter has not moved meanwhile
    count = KAPUnregisterCountNow();
    const KAPLoadOutcome outcome = Load();
    if (outcome != KAPLoadOutcome::kLoaded) return outcome;
  } while (count != KAPUnregisterCountNow());
  RememberLoaded(count);
  return KAPLoadOutcome::kLoaded;
}

// Not remembered: while the table is incomplete each release looks its procedures up again. That is
// slow, but a host that has lost a procedure is already failing.
void KAPProcTable::ReloadForRelease() noexcept {
  if (!gGetProc || fDropped.load()) return;
  const std::lock_guard lock(gLoading);
  if (Reload() == KAPLoadOutcome::kLoaded) return;
  for (std::size_t i = 0; i < fEntryCount; ++i) {
    if (!fTraits[i].fNoOpUnbound) continue;
    fSlots[i].store(gGetProc(fInterfaceName, fEntries[i].fMethodName, fEntries[i].fProcName),
                    std::memory_order_relaxed);
  }
}

// Called before anything is stored, because what a slot holds must be forgotten when the binding
// ends.
void KAPProcTable::Enlist() noexcept {
  if (fListed.exchange(true)) return;
  fNextListed = fListedTables.load();
  while (!fListedTables.compare_exchange_weak(fNextListed, this)) {
  }
}

// The watched counter is stored last: a thread that sees it sees the count and the slots as well.
void KAPProcTable::RememberLoaded(unsigned long count) noexcept {
  fCount.store(count, std::memory_order_release);
  fWatched.store(gKAPUnregisterCount, std::memory_order_release);
}

// An empty slot is the no-op. Callers check it anyway, since an object may be released before its
// table was ever loaded; no-op procedures would need one for each function type.
void KAPProcTable::Forget() noexcept {
  fWatched.store(&kNeverFresh);
  fCount.store(0);
  for (std::size_t i = 0; i < fEntryCount; ++i) {
    if (fTraits[i].fNoOpUnbound) fSlots[i].store(nullptr);
  }
}

void KAPProcTable::Drop() noexcept {
  Forget();
  fDropped.store(true);
}

void KAPProcTable::Replace(std::size_t slot, void* proc) noexcept {
  fSlots[slot].store(proc, std::memory_order_relaxed);
  fDropped.store(true);
}

void KAPProcTable::ForgetAll() noexcept {
  for (KAPProcTable* table = fListedTables.load(); table; table = table->fNextListed) {
    table->Forget();
    table->fDropped.store(false);
  }
}

}  // namespace KAP_T_MT
