// SPDX-License-Identifier: MIT
#include "containers/Containers.h"

#include <memory>
#include <new>
#include <utility>

#include "accounting/Accounting.h"
#include "base/Reports.h"
#include "heap/Heap.h"
#include "quarantine/Quarantine.h"

namespace KAPHost {

ContainerEquipment::~ContainerEquipment() {
  for (const Instance& instance : fInstances) --instance.fType->fUses;
  for (const ContainerType* type : fInterfaces) --type->fUses;
}

void ContainerEquipment::AddInstance(const Instance& instance) {
  fInstances.push_back(instance);
  ++instance.fType->fUses;
}

void ContainerEquipment::AddInterface(const ContainerType& type) {
  fInterfaces.push_back(&type);
  ++type.fUses;
}

void ContainerEquipment::Share(const ContainerEquipment& other) {
  for (const Instance& instance : other.fInstances) {
    AddInstance({instance.fType, instance.fInstance, nullptr});
  }
  for (const ContainerType* type : other.fInterfaces) AddInterface(*type);
}

void ContainerEquipment::DeleteInstances() noexcept {
  while (!fInstances.empty()) {
    const Instance instance = fInstances.back();
    fInstances.pop_back();
    --instance.fType->fUses;
    if (instance.fDelete) instance.fDelete(instance.fInstance);
  }
}

const ContainerEquipment::Instance* ContainerEquipment::FindInstance(
    const KAPStringAtom* instanceName) const {
  for (const Instance& instance : fInstances) {
    if (instance.fType->fInstanceName == instanceName) return &instance;
  }
  return nullptr;
}

namespace {

void FreeRecord(void* container) noexcept { Deallocate(container); }

// The type of dead containers. Their own may be deleted before the quarantine is emptied.
constinit const ContainerType kDeadType = {
    nullptr, nullptr, nullptr, nullptr, nullptr, SlotOf(KAPResource::kContainer), 0};

// Keeps the record with nothing in it: no instance, no names, no stream.
[[gnu::cold]] void Bury(KAPContainer& container) noexcept {
  const bool isKept = KeepDead(&container, &FreeRecord, "container", container.fSignature);
  container.fSignature = nullptr;
  container.fPrimary = nullptr;
  container.fType = &kDeadType;
  container.fEquipment = nullptr;
  // First kept, then marked: a release that sees the mark finds the record.
  isKept ? container.fCount.Bury() : FreeRecord(&container);
}

// Destroys a container that has had its last reference, or none. Returns the original of a clone;
// the caller releases a reference to it.
KAPContainer* Destroy(KAPContainer& container, bool hadNone) noexcept {
  if (container.fEquipment) container.fEquipment->DeleteInstances();
  if (container.fType->fDelete) container.fType->fDelete(container.fPrimary);
  const std::unique_ptr<ContainerEquipment> equipment(container.fEquipment);
  Count(container.fType->fSlot, -1, hadNone ? 1 : 0);
  IsFollowing() ? Bury(container) : FreeRecord(&container);
  return equipment ? equipment->Original() : nullptr;
}

// The same for the most frequent containers: nothing can be registered for one that is dying.
void DestroyPlain(KAPContainer& container) noexcept {
  if (container.fType->fDelete) container.fType->fDelete(container.fPrimary);
  Count(container.fType->fSlot, -1, 0);
  IsFollowing() ? Bury(container) : FreeRecord(&container);
}

// Counts or reports what a release found. True when the caller must destroy the container. The
// caller reads the slot before the release: afterwards another thread may destroy the container.
bool MustDestroy(const KAPContainer& container, unsigned slot, RefCount::Release found) noexcept {
  switch (found) {
    case RefCount::Release::kLast:
      return true;
    case RefCount::Release::kReleased:
      Count(slot, 0, -1);
      break;
    case RefCount::Release::kNone:
      Report("KAP host: a container without references was released");
      break;
    case RefCount::Release::kDestroyed:
      if (container.fCount.IsDead()) ReportDead(&container, "release");
      break;
  }
  return false;
}

// A loop: clones of clones form chains of any length.
template <auto kDrop>
void ReleaseChain(KAPContainer& container) noexcept {
  for (KAPContainer* next = &container; next;) {
    const unsigned slot = next->fType->fSlot;
    if (!MustDestroy(*next, slot, (next->fCount.*kDrop)())) return;
    next = Destroy(*next, false);
  }
}

}  // namespace

KAPContainer* NewContainerRecord(const ContainerType& type, void* instance) noexcept {
  void* storage = Allocate(sizeof(KAPContainer));
  if (!storage) return nullptr;
  Count(type.fSlot, 1, 0);
  return new (storage) KAPContainer{{}, instance, type.fSignature, &type, nullptr};
}

KAPContainer* CloneContainerRecord(KAPContainer& original) {
  auto equipment = std::make_unique<ContainerEquipment>(&original);
  if (original.fEquipment) equipment->Share(*original.fEquipment);
  const ContainerType* unowning =
      gContainerTypes.Find(original.fType->fInstanceName, original.fType->fInterfaceName, nullptr);
  if (!unowning) throw std::bad_alloc();
  if (!AddContainerRef(original)) return nullptr;
  KAPContainer* clone = NewContainerRecord(*unowning, original.fPrimary);
  if (!clone) {
    ReleaseContainer(original);
    throw std::bad_alloc();
  }
  clone->fEquipment = equipment.release();
  return clone;
}

bool AddContainerRef(KAPContainer& container) noexcept {
  if (!container.fCount.Add()) {
    if (container.fCount.IsDead()) ReportDead(&container, "AddRef");
    return false;
  }
  Count(container.fType->fSlot, 0, 1);
  return true;
}

void ReleaseContainer(KAPContainer& container) noexcept {
  if (container.fCount.HasOne() && !container.fEquipment) {
    container.fCount.DropOnly();
    return DestroyPlain(container);
  }
  ReleaseChain<&RefCount::Drop>(container);
}

void ReleaseCheckedContainer(KAPContainer& container) noexcept {
  ReleaseChain<&RefCount::DropExactly>(container);
}

void DropContainerRef(KAPContainer& container) noexcept {
  const unsigned slot = container.fType->fSlot;
  MustDestroy(container, slot, container.fCount.DropAndKeep());
}

void DeleteUnownedContainer(KAPContainer& container) noexcept {
  if (container.fCount.IsDead()) ReportDead(&container, "release");
  if (!container.fCount.Claim()) return;
  if (KAPContainer* original = Destroy(container, true)) ReleaseContainer(*original);
}

}  // namespace KAPHost
