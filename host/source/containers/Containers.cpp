#include "containers/Containers.h"

#include <cstdlib>
#include <memory>
#include <new>

#include "accounting/Accounting.h"
#include "base/Counting.h"
#include "base/Reports.h"

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

// Returns the original of a clone; the caller releases a reference to it.
KAPContainer* Destroy(KAPContainer& container, long references) noexcept {
  if (container.fEquipment) container.fEquipment->DeleteInstances();
  if (container.fType->fDelete) container.fType->fDelete(container.fPrimary);
  const std::unique_ptr<ContainerEquipment> equipment(container.fEquipment);
  Count(container.fType->fSlot, -1, -references);
  std::free(&container);
  return equipment ? equipment->Original() : nullptr;
}

enum class AtZero { kDestroy, kLive };

// True when the caller must destroy the container. The slot is read first: once the reference is
// gone, another thread may destroy the container.
bool GiveUpRef(KAPContainer& container, AtZero atZero) noexcept {
  const unsigned slot = container.fType->fSlot;
  const int zero = atZero == AtZero::kDestroy ? kDying : 0;
  const int before = Update(container.fCount, [zero](int count) {
    if (count <= 0) return count;
    return count == 1 ? zero : count - 1;
  });
  if (before == 1 && atZero == AtZero::kDestroy) return true;
  if (before > 0) Count(slot, 0, -1);
  if (before == 0) Report("KAP host: a container without references was released");
  return false;
}

}  // namespace

KAPContainer* NewContainerRecord(const ContainerType& type, void* instance) noexcept {
  void* storage = std::malloc(sizeof(KAPContainer));
  if (!storage) return nullptr;
  Count(type.fSlot, 1, 1);
  return new (storage) KAPContainer{1, instance, type.fSignature, &type, nullptr};
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
  const int before =
      Update(container.fCount, [](int count) { return count < 0 ? count : count + 1; });
  if (before < 0) return false;
  Count(container.fType->fSlot, 0, 1);
  return true;
}

// A loop: clones of clones form chains of any length.
void ReleaseContainer(KAPContainer& container) noexcept {
  for (KAPContainer* next = &container; next && GiveUpRef(*next, AtZero::kDestroy);) {
    next = Destroy(*next, 1);
  }
}

void DropContainerRef(KAPContainer& container) noexcept { GiveUpRef(container, AtZero::kLive); }

void DeleteUnownedContainer(KAPContainer& container) noexcept {
  const int before =
      Update(container.fCount, [](int count) { return count == 0 ? kDying : count; });
  if (before != 0) return;
  if (KAPContainer* original = Destroy(container, 0)) ReleaseContainer(*original);
}

}  // namespace KAPHost
