// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <new>
#include <vector>

#include "accounting/Accounting.h"
#include "base/RefCount.h"
#include "containers/ContainerTypes.h"
#include "heap/Heap.h"
#include "kap/KAPTypes.h"

namespace KAPHost {

// What only few containers have: further interfaces and instances, and for a clone its original.
// The clone holds a reference to the original, since it shares the instances.
class ContainerEquipment {
 public:
  struct Instance {
    const ContainerType* fType;
    void* fInstance;
    KAPDeleteProc fDelete;
  };

  explicit ContainerEquipment(KAPContainer* original = nullptr) : fOriginal(original) {}
  ContainerEquipment(const ContainerEquipment&) = delete;
  ContainerEquipment& operator=(const ContainerEquipment&) = delete;
  ~ContainerEquipment();

  // Both throw std::bad_alloc and then change nothing.
  void AddInstance(const Instance& instance);
  void AddInterface(const ContainerType& type);
  // Adds everything that `other` has; its instances without their delete procedures.
  void Share(const ContainerEquipment& other);
  // The newest first.
  void DeleteInstances() noexcept;

  const Instance* FindInstance(const KAPStringAtom* instanceName) const;
  // In the order of registration.
  const std::vector<const ContainerType*>& Interfaces() const { return fInterfaces; }
  KAPContainer* Original() const { return fOriginal; }

 private:
  std::vector<Instance> fInstances;
  std::vector<const ContainerType*> fInterfaces;
  KAPContainer* fOriginal;
};

}  // namespace KAPHost

// A container record, one allocation. Components read the primary instance and the signature in
// place.
struct KAPContainer {
  KAPHost::RefCount fCount;
  void* fPrimary;
  const char* fSignature;
  const KAPHost::ContainerType* fType;
  KAPHost::ContainerEquipment* fEquipment;
};

static_assert(offsetof(KAPContainer, fSignature) ==
              offsetof(KAPContainer, fPrimary) + sizeof(void*));

namespace KAPHost {

// The slot of a type counts its containers, and as the extent the references beyond one of each: so
// making and destroying a container changes one number.
inline Holding HoldingOf(unsigned slot) noexcept {
  const Holding counted = TotalOf(slot);
  return {counted.fNumber, WrappingSum(counted.fNumber, counted.fExtent)};
}

// A container with one reference; null when out of memory.
KAPContainer* NewContainerRecord(const ContainerType& type, void* instance) noexcept;
// The same; null also when the thread has no block at hand (see TakeAtHand).
inline KAPContainer* NewRecordAtHand(const ContainerType& type, void* instance) noexcept {
  ThreadAccount* const account = tAccount;
  if (!account) [[unlikely]]
    return nullptr;
  void* const storage = TakeAtHand(sizeof(KAPContainer)).fBlock;
  if (!storage) [[unlikely]]
    return nullptr;
  account->Add(type.fSlot, 1, 0);
  return new (storage) KAPContainer{{}, instance, type.fSignature, &type, nullptr};
}

// A new container with the same instances and interfaces. It owns none of them and keeps the
// original alive. Null when the original is being destroyed. Throws std::bad_alloc.
KAPContainer* CloneContainerRecord(KAPContainer& original);

// False when the container is being destroyed.
bool AddContainerRef(KAPContainer& container) noexcept;
void ReleaseContainer(KAPContainer& container) noexcept;
// The same while checking is on: of two releases of the only reference, one is reported.
void ReleaseCheckedContainer(KAPContainer& container) noexcept;
// Releases a reference without destroying the container, even when it was the last one.
void DropContainerRef(KAPContainer& container) noexcept;
// Destroys a container that has no reference.
void DeleteUnownedContainer(KAPContainer& container) noexcept;

}  // namespace KAPHost
