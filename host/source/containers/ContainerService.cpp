// SPDX-License-Identifier: MIT
#include <memory>
#include <new>

#include "accounting/Accounting.h"
#include "atoms/AtomTable.h"
#include "base/Current.h"
#include "binder/Registration.h"
#include "containers/Containers.h"
#include "errors/Errors.h"
#include "faults/Gate.h"
#include "kap/KAPContainerInterface.h"

// The procedures of KAPContainerInterface.

namespace KAPHost {

namespace {

const ContainerType& TypeOf(KAPStringAtom* instanceName, KAPStringAtom* interfaceName,
                            KAPDeleteProc deleteInstance = nullptr) {
  const ContainerType* type = gContainerTypes.Find(instanceName, interfaceName, deleteInstance);
  if (!type) throw std::bad_alloc();
  return *type;
}

[[gnu::noinline]] KAPError* NewContainerSlowly(KAPContainer** out, void* instance,
                                               KAPStringAtom* instanceName,
                                               KAPStringAtom* interfaceName,
                                               KAPDeleteProc deleteInstance) noexcept {
  const ContainerType* type = gContainerTypes.Find(instanceName, interfaceName, deleteInstance);
  if (!type) return MemoryError();
  *out = NewContainerRecord(*type, instance);
  return *out ? nullptr : MemoryError();
}

KAPError* NewFullContainer(KAPContainer** out, void* instance, KAPStringAtom* instanceName,
                           KAPStringAtom* interfaceName, KAPDeleteProc deleteInstance) noexcept {
  const ContainerType* type =
      gContainerTypes.FindKnown(instanceName, interfaceName, deleteInstance);
  KAPContainer* const made = type ? NewRecordAtHand(*type, instance) : nullptr;
  if (!made) [[unlikely]]
    return NewContainerSlowly(out, instance, instanceName, interfaceName, deleteInstance);
  *out = made;
  return nullptr;
}

KAPError* NewContainer(KAPContainer** out) noexcept {
  return NewFullContainer(out, nullptr, nullptr, nullptr, nullptr);
}

KAPError* CloneContainer(KAPContainer** out, KAPContainer* container) noexcept {
  if (!container) return InvalidContainer();
  return ReturnError([&]() -> KAPError* {
    *out = CloneContainerRecord(*container);
    return *out ? nullptr : InvalidContainer();
  });
}

bool AddRef(KAPContainer* container) noexcept { return container && AddContainerRef(*container); }

// Without a host, the components whose procedures delete the instances may be unloaded as well.
void Release(KAPContainer* container) noexcept {
  if (!container) return;
  if (!HasGateBits(kGateClosed | kGateChecking)) return ReleaseContainer(*container);
  if (!IsClosed()) ReleaseCheckedContainer(*container);
}

void DecrementWithoutDelete(KAPContainer* container) noexcept {
  if (container && !IsClosed()) DropContainerRef(*container);
}

void DeleteUnowned(KAPContainer* container) noexcept {
  if (container && !IsClosed()) DeleteUnownedContainer(*container);
}

ContainerEquipment& EquipmentOf(KAPContainer& container) {
  if (!container.fEquipment) container.fEquipment = new ContainerEquipment;
  return *container.fEquipment;
}

// What is added to a container that is being destroyed would never be deleted.
bool CanChange(const KAPContainer* container) { return container && container->fCount.IsAlive(); }

KAPError* RegisterInterface(KAPContainer* container, KAPStringAtom* instanceName,
                            KAPStringAtom* interfaceName) noexcept {
  if (!CanChange(container)) return InvalidContainer();
  if (!instanceName || !interfaceName) return InvalidArgument();
  return ReturnError([&]() -> KAPError* {
    EquipmentOf(*container).AddInterface(TypeOf(instanceName, interfaceName));
    return nullptr;
  });
}

bool IsEmpty(const KAPContainer& container) {
  return !container.fType->fInstanceName && !container.fPrimary;
}

// The container and its references are counted under its new type from now on.
void SetPrimary(KAPContainer& container, const ContainerType& type, void* instance) {
  const long further = container.fCount.Get() - 1;
  Count(container.fType->fSlot, -1, -further);
  Count(type.fSlot, 1, further);
  container.fPrimary = instance;
  container.fSignature = type.fSignature;
  container.fType = &type;
}

// Whether the container has an instance of this name. Sets `out` to it.
bool FindInstance(void** out, const KAPContainer& container, const KAPStringAtom* instanceName) {
  if (container.fType->fInstanceName == instanceName) {
    *out = container.fPrimary;
    return true;
  }
  if (!container.fEquipment) return false;
  const ContainerEquipment::Instance* found = container.fEquipment->FindInstance(instanceName);
  if (!found) return false;
  *out = found->fInstance;
  return true;
}

KAPError* RegisterInstance(KAPContainer* container, KAPStringAtom* instanceName, void* instance,
                           KAPDeleteProc deleteInstance) noexcept {
  if (!CanChange(container)) return InvalidContainer();
  if (!instanceName) return InvalidArgument();
  void* present = nullptr;
  if (FindInstance(&present, *container, instanceName)) {
    return MakeError("the container has an instance of that name");
  }
  return ReturnError([&]() -> KAPError* {
    const ContainerType& type = TypeOf(instanceName, nullptr, deleteInstance);
    if (IsEmpty(*container)) {
      SetPrimary(*container, type, instance);
    } else {
      EquipmentOf(*container).AddInstance({&type, instance, deleteInstance});
    }
    return nullptr;
  });
}

// Searches the container's interfaces from number `count` - 1 down, so those registered later come
// first. Number 0 is the interface that the container was made with.
void* FindMethod(const KAPContainer& container, std::size_t count, const KAPStringAtom& methodName,
                 const KAPStringAtom& procName) {
  const Binder* const binder = Current<Binder>();
  for (std::size_t i = count; i-- > 0;) {
    const ContainerType* type =
        i == 0 ? container.fType : container.fEquipment->Interfaces()[i - 1];
    if (!type->fInterfaceName) continue;
    void* proc = binder->Find(type->fInterfaceName->Text(), methodName.Text(), procName.Text());
    if (proc) return proc;
  }
  return nullptr;
}

std::size_t InterfaceCount(const KAPContainer& container) {
  return !container.fEquipment ? 1 : 1 + container.fEquipment->Interfaces().size();
}

// The number of the first interface registered for the instance.
std::size_t FirstInterface(const KAPContainer& container, const KAPStringAtom* instanceName) {
  const std::size_t count = InterfaceCount(container);
  std::size_t i = 0;
  while (i < count &&
         (i == 0 ? container.fType : container.fEquipment->Interfaces()[i - 1])->fInstanceName !=
             instanceName) {
    ++i;
  }
  return i == count ? 0 : i;
}

// `optional` makes no difference: a missing method is never an error here.
KAPError* GetMethod(void** out, KAPContainer* container, KAPStringAtom* methodName,
                    KAPStringAtom* procName, int) noexcept {
  if (!container) return InvalidContainer();
  if (!methodName || !procName) return InvalidArgument();
  *out = FindMethod(*container, InterfaceCount(*container), *methodName, *procName);
  return nullptr;
}

KAPError* GetParentMethod(void** out, KAPContainer* container, KAPStringAtom* instanceName,
                          KAPStringAtom* methodName, KAPStringAtom* procName) noexcept {
  if (!container) return InvalidContainer();
  if (!instanceName || !methodName || !procName) {
    return InvalidArgument();
  }
  *out = FindMethod(*container, FirstInterface(*container, instanceName), *methodName, *procName);
  return nullptr;
}

void* GetInstance(KAPContainer* container, KAPStringAtom* instanceName) noexcept {
  void* instance = nullptr;
  if (!container || !instanceName) return nullptr;
  FindInstance(&instance, *container, instanceName);
  return instance;
}

KAPError* NGetInstance(void** out, KAPContainer* container, KAPStringAtom* instanceName) noexcept {
  if (!container) return InvalidContainer();
  if (!instanceName) return InvalidArgument();
  FindInstance(out, *container, instanceName);
  return nullptr;
}

KAPStringAtom* GetSignature(KAPContainer* container) noexcept {
  if (!container) return nullptr;
  gAtoms.AddRef(container->fType->fInstanceName);
  return container->fType->fInstanceName;
}

// The count is below zero while the container is being destroyed.
const int* DebugGetRefCountAddr(KAPContainer* container) noexcept {
  return !container ? nullptr : container->fCount.Address();
}

long GetOffsetToPrimaryInstance() noexcept {
  return static_cast<long>(offsetof(KAPContainer, fPrimary));
}

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPContainerInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPContainerInterface, &NewFullContainer, &NewContainer, &CloneContainer,
                &AddRef, &Release, &DecrementWithoutDelete, &DeleteUnowned, &RegisterInterface,
                &RegisterInstance, &GetMethod, &GetParentMethod, &GetInstance, &NGetInstance,
                &GetSignature, &DebugGetRefCountAddr, &GetOffsetToPrimaryInstance>(binder);
}

// Types of one signature share a line; types without a slot of their own share theirs. References
// that the types hold to their names are not held by components.
template <>
void AddNamed<KAPResource::kContainer>(HoldingSum& sum) {
  gContainerTypes.ForEach([&](const ContainerType& type) {
    if (type.fSlot >= kFirstTypeSlot && type.fSlot < kOtherTypesSlot) {
      sum.Add(KAPResource::kContainer, type.fSignature, HoldingOf(type.fSlot));
    }
    for (const KAPStringAtom* atom : {type.fInstanceName, type.fInterfaceName}) {
      if (atom) sum.Add(KAPResource::kAtom, atom->Text(), {-1, 0});
    }
  });
  sum.Add(KAPResource::kContainer, "(no signature)", HoldingOf(SlotOf(KAPResource::kContainer)));
  sum.Add(KAPResource::kContainer, "(other types)", HoldingOf(kOtherTypesSlot));
}

}  // namespace KAPHost
