#include "kap/KAPProcTable.h"

#include "KAPBinderState.h"

namespace KAP_T_MT {

const unsigned long KAPProcTable::kNeverFresh = ~0UL;
constinit std::atomic<KAPProcTable*> KAPProcTable::fLoadedTables = nullptr;

namespace {

KAPLoadOutcome Fetch(const char* name, const _t_KAPFTabEntry* entries, std::size_t count,
                     std::atomic<void*>* slots) {
  return KAPFetchProcs(entries, count, name, [=](std::size_t i, void* proc) {
    slots[i].store(proc, std::memory_order_relaxed);
  });
}

}  // namespace

bool KAPProcTable::Load() {
  return KAPAnswerLoad(Fetch(fInterfaceName, fEntries, fEntryCount, fSlots));
}

void KAPProcTable::Reload() {
  if (!KAPIsBound()) KAPThrowMissingInterfaceError();
  unsigned long count = 0;
  do {  // again when the counter moves meanwhile
    count = KAPUnregisterCountNow();
    if (!Load()) KAPThrowMissingInterfaceError();
  } while (count != KAPUnregisterCountNow());
  RememberLoaded(count);
}

bool KAPProcTable::TryReload() noexcept {
  if (!KAPIsBound()) return false;
  unsigned long count = 0;
  do {
    count = KAPUnregisterCountNow();
    const auto outcome = Fetch(fInterfaceName, fEntries, fEntryCount, fSlots);
    if (outcome != KAPLoadOutcome::kLoaded) return false;
  } while (count != KAPUnregisterCountNow());
  RememberLoaded(count);
  return true;
}

// The count goes first and the counter to compare it with last: a thread that sees the counter sees
// the slots as well.
void KAPProcTable::RememberLoaded(unsigned long count) noexcept {
  fCount.store(count, std::memory_order_release);
  fWatched.store(gKAPUnregisterCount, std::memory_order_release);
  if (fListed.exchange(true)) return;
  fNextLoaded = fLoadedTables.load();
  while (!fLoadedTables.compare_exchange_weak(fNextLoaded, this)) {
  }
}

void KAPProcTable::ForgetAll() noexcept {
  for (KAPProcTable* table = fLoadedTables.load(); table; table = table->fNextLoaded) {
    table->fWatched.store(&kNeverFresh);
    table->fCount.store(0);
  }
}

}  // namespace KAP_T_MT
