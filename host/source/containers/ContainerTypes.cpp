// SPDX-License-Identifier: MIT
#include "containers/ContainerTypes.h"

#include <new>

namespace KAPHost {

constinit ContainerTypes gContainerTypes;

const ContainerType* ContainerTypes::Add(KAPStringAtom* instanceName, KAPStringAtom* interfaceName,
                                         KAPDeleteProc deleteInstance) noexcept {
  const std::lock_guard lock(fMutex);
  std::atomic<ContainerType*>& bucket =
      fBuckets[Bucket(instanceName, interfaceName, deleteInstance)];
  ContainerType* first = bucket.load(std::memory_order_relaxed);
  if (const ContainerType* type = Search(first, instanceName, interfaceName, deleteInstance))
    return type;
  const char* signature = instanceName ? instanceName->Text() : nullptr;
  auto* type = new (std::nothrow) ContainerType{first,
                                                instanceName,
                                                interfaceName,
                                                deleteInstance,
                                                signature,
                                                SlotOf(KAPResource::kContainer),
                                                0};
  if (!type) return nullptr;
  if (instanceName) type->fSlot = TakeSlot();
  gAtoms.AddRef(instanceName);
  gAtoms.AddRef(interfaceName);
  bucket.store(type, std::memory_order_release);
  return type;
}

unsigned ContainerTypes::TakeSlot() noexcept {
  for (unsigned slot = kFirstTypeSlot; slot < kOtherTypesSlot; ++slot) {
    if (!fSlotTaken[slot]) {
      fSlotTaken[slot] = true;
      return slot;
    }
  }
  return kOtherTypesSlot;
}

void ContainerTypes::ReleaseUnused() noexcept {
  const std::lock_guard lock(fMutex);
  for (auto& bucket : fBuckets) {
    ContainerType* kept = nullptr;
    for (ContainerType *type = bucket.load(std::memory_order_relaxed), *next; type; type = next) {
      next = type->fNext;
      if (IsUsed(*type)) {
        type->fNext = kept;
        kept = type;
      } else {
        Delete(type);
      }
    }
    bucket.store(kept, std::memory_order_relaxed);
  }
}

void ContainerTypes::Delete(ContainerType* type) noexcept {
  gAtoms.Release(type->fInstanceName);
  gAtoms.Release(type->fInterfaceName);
  fSlotTaken[type->fSlot] = false;
  delete type;
}

}  // namespace KAPHost
