// SPDX-License-Identifier: MIT
#include "kap/KAPMethodTable.h"

#include <mutex>
#include <new>

#include "kap/KAPMemory.h"
#include "source/kap/KAPBinding.h"

namespace KAP_T_MT {

int KAPLoadMethodTable(const _t_KAPFTabEntry* entries, std::size_t count, KAPContainer* container,
                       int required, void** out) {
  for (std::size_t i = 0; i < count; ++i) {
    const CKAPStringAtom methodName(entries[i].fMethodName);
    const CKAPStringAtom procName(entries[i].fProcName);
    void* method = nullptr;
    KAPCheck(KAPContainerClient::Call<"GetMethod">(&method, container, methodName.Handle(),
                                                   procName.Handle(), required ? 0 : 1));
    out[i] = method;
    if (required && !method) return 0;
  }
  return 1;
}

KAPVTabGeneric* KAPVTabGeneric::NewKAPVTab(std::size_t slotCount, KAPVTabListGeneric& list) {
  const std::size_t size = KAPCheckedSize(slotCount, sizeof(Slot), sizeof(KAPVTabGeneric));
  auto* table = ::new (CKAPMemory::Alloc(size)) KAPVTabGeneric;
  for (std::size_t i = 0; i < slotCount; ++i) ::new (table->Slots() + i) Slot(nullptr);
  list.Join();  // the list now has something to release when the binding ends
  table->fNext = list.fHead;
  if (list.fHead) list.fHead->fPrevious = table;
  list.fHead = table;
  ++list.fTableCount;
  return table;
}

KAPVTabListGeneric::~KAPVTabListGeneric() { DeleteAll(); }

const KAPVTabGeneric::Slot* KAPVTabListGeneric::GetVTabDynamic(KAPContainer* container,
                                                               KAPVTabInitProc initProc) {
  const char* signature = CKAPContainer::GetSignature(container);
  if (!signature) CKAPContainer::ThrowNoSignatureException();
  // Without the lock: the count of a table is stored last, so a current table is complete.
  const KAPVTabGeneric* last = fLast.load(std::memory_order_acquire);
  if (last && IsCurrent(*last, signature) && last->fLoaded.load(std::memory_order_relaxed))
      [[likely]]
    return last->Slots();

  const std::lock_guard lock(fLock);
  KAPVTabGeneric& table = FindOrAdd(signature);
  if (!IsCurrent(table, signature) && !table.fFilling) Fill(table, signature, container, initProc);
  if (!table.fLoaded.load(std::memory_order_relaxed)) return nullptr;
  fLast.store(&table, std::memory_order_release);
  return table.Slots();
}

bool KAPVTabListGeneric::IsCurrent(const KAPVTabGeneric& table, const char* signature) noexcept {
  return table.fCount.load(std::memory_order_acquire) == KAPUnregisterCountNow() &&
         table.fFilled.load(std::memory_order_relaxed) &&
         table.fKey.load(std::memory_order_relaxed) == signature;
}

// Reuses a table whose first fill failed before it had a key.
KAPVTabGeneric& KAPVTabListGeneric::FindOrAdd(const char* signature) {
  KAPVTabGeneric* spare = nullptr;
  for (KAPVTabGeneric* table = fHead; table; table = table->fNext) {
    const char* key = table->fKey.load(std::memory_order_relaxed);
    if (key == signature) return *table;
    if (!key && !table->fFilling) spare = table;
  }
  return spare ? *spare : *KAPVTabGeneric::NewKAPVTab(fSlotCount, *this);
}

// The counter is read before the fill and stored after it, so a counter that moves meanwhile leaves
// the table stale. A fill that calls back into the list for the same table gets the result of the
// last complete fill.
void KAPVTabListGeneric::Fill(KAPVTabGeneric& table, const char* signature, KAPContainer* container,
                              KAPVTabInitProc initProc) {
  struct FillingMark {
    explicit FillingMark(bool& filling) noexcept : fFilling(filling) { fFilling = true; }
    ~FillingMark() { fFilling = false; }
    bool& fFilling;
  };
  const FillingMark mark(table.fFilling);
  const unsigned long count = KAPUnregisterCountNow();
  table.fSignature = CKAPStringAtom(signature);
  table.fKey.store(table.fSignature.Text(), std::memory_order_relaxed);
  const bool loaded = initProc(container, 1, table.Slots()) != 0;
  table.fLoaded.store(loaded, std::memory_order_relaxed);
  table.fFilled.store(true, std::memory_order_relaxed);
  table.fCount.store(count, std::memory_order_release);
}

void KAPVTabListGeneric::DeleteAll() noexcept {
  KAPVTabGeneric* table = fHead;
  ForgetAll();
  while (table) {
    KAPVTabGeneric* next = table->fNext;
    table->~KAPVTabGeneric();
    CKAPMemory::Free(table);
    table = next;
  }
}

void KAPVTabListGeneric::ForgetAll() noexcept {
  fLast.store(nullptr);
  fHead = nullptr;
  fTableCount = 0;
}

}  // namespace KAP_T_MT
