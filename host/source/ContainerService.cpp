#include <memory>
#include <new>

#include "AtomTable.h"
#include "Containers.h"
#include "Errors.h"
#include "Gate.h"
#include "HostState.h"
#include "Services.h"

// The procedures of KAPContainerInterface.
//
// The first instance of an empty container becomes the primary one. Interfaces registered later
// come first in GetMethod; what they cover up is found by GetParentMethod. A container is equipped
// with further interfaces and instances by its maker, before other threads use it.

namespace KAPHost {

namespace {

const ContainerType& TypeOf(KAPStringAtom* instanceName, KAPStringAtom* interfaceName,
                            KAPDeleteProc deleteInstance = nullptr) {
  const ContainerType* type = gContainerTypes.Find(instanceName, interfaceName, deleteInstance);
  if (type == nullptr) throw std::bad_alloc();
  return *type;
}

KAPError* NewFullContainer(KAPContainer** out, void* instance, KAPStringAtom* instanceName,
                           KAPStringAtom* interfaceName, KAPDeleteProc deleteInstance) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (Fails(KAPFault::kContainer)) return MemoryError();
  const ContainerType* type = gContainerTypes.Find(instanceName, interfaceName, deleteInstance);
  if (type == nullptr) return MemoryError();
  *out = NewContainerRecord(*type, instance);
  return *out != nullptr ? nullptr : MemoryError();
}

KAPError* NewContainer(KAPContainer** out) noexcept {
  return NewFullContainer(out, nullptr, nullptr, nullptr, nullptr);
}

KAPError* CloneContainer(KAPContainer** out, KAPContainer* container) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (Fails(KAPFault::kContainer)) return MemoryError();
  if (container == nullptr) return InvalidContainer();
  return ReturnError([&]() -> KAPError* {
    *out = CloneContainerRecord(*container);
    return *out != nullptr ? nullptr : InvalidContainer();
  });
}

bool AddRef(KAPContainer* container) noexcept {
  return !Fails(KAPFault::kReference) && container != nullptr && AddContainerRef(*container);
}

// Without a host the components whose procedures would delete the instances may be gone as well.
void Release(KAPContainer* container) noexcept {
  if (container != nullptr && !IsClosed()) ReleaseContainer(*container);
}

void DecrementWithoutDelete(KAPContainer* container) noexcept {
  if (container != nullptr && !IsClosed()) DropContainerRef(*container);
}

void DeleteUnowned(KAPContainer* container) noexcept {
  if (container != nullptr && !IsClosed()) DeleteUnownedContainer(*container);
}

ContainerEquipment& EquipmentOf(KAPContainer& container) {
  if (container.fEquipment == nullptr) container.fEquipment = new ContainerEquipment;
  return *container.fEquipment;
}

KAPError* RegisterInterface(KAPContainer* container, KAPStringAtom* instanceName,
                            KAPStringAtom* interfaceName) noexcept {
  if (Fails(KAPFault::kInstance)) return MemoryError();
  if (container == nullptr) return InvalidContainer();
  if (instanceName == nullptr || interfaceName == nullptr) return InvalidArgument();
  return ReturnError([&]() -> KAPError* {
    EquipmentOf(*container).AddInterface(TypeOf(instanceName, interfaceName));
    return nullptr;
  });
}

bool IsEmpty(const KAPContainer& container) {
  return container.fType->fInstanceName == nullptr && container.fPrimary == nullptr;
}

// The container's references move over to the books of its new type.
void SetPrimary(KAPContainer& container, const ContainerType& type, void* instance) {
  const long references = container.fCount.load(std::memory_order_relaxed);
  Count(container.fType->fSlot, -1, -references);
  Count(type.fSlot, 1, references);
  container.fPrimary = instance;
  container.fSignature = type.fSignature;
  container.fType = &type;
}

// Whether the container has an instance of this name, and which.
bool FindInstance(void** out, const KAPContainer& container, const KAPStringAtom* instanceName) {
  if (container.fType->fInstanceName == instanceName) {
    *out = container.fPrimary;
    return true;
  }
  if (container.fEquipment == nullptr) return false;
  const ContainerEquipment::Instance* found = container.fEquipment->FindInstance(instanceName);
  if (found == nullptr) return false;
  *out = found->fInstance;
  return true;
}

KAPError* RegisterInstance(KAPContainer* container, KAPStringAtom* instanceName, void* instance,
                           KAPDeleteProc deleteInstance) noexcept {
  if (Fails(KAPFault::kInstance)) return MemoryError();
  if (container == nullptr) return InvalidContainer();
  if (instanceName == nullptr) return InvalidArgument();
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

// Looks through the container's interfaces, those registered later first, from number `count` - 1
// down. Number 0 is the interface that the container was made with.
void* FindMethod(const KAPContainer& container, std::size_t count, const KAPStringAtom& methodName,
                 const KAPStringAtom& procName) {
  for (std::size_t i = count; i-- > 0;) {
    const ContainerType* type =
        i == 0 ? container.fType : container.fEquipment->Interfaces()[i - 1];
    if (type->fInterfaceName == nullptr) continue;
    void* proc = HostState::Current()->Find(type->fInterfaceName->Text(), methodName.Text(),
                                            procName.Text());
    if (proc != nullptr) return proc;
  }
  return nullptr;
}

std::size_t InterfaceCount(const KAPContainer& container) {
  return container.fEquipment == nullptr ? 1 : 1 + container.fEquipment->Interfaces().size();
}

// The number of the first interface that was registered for the instance.
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

// `optional` makes no difference: a method that there is not is never an error here.
KAPError* GetMethod(void** out, KAPContainer* container, KAPStringAtom* methodName,
                    KAPStringAtom* procName, int) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (Fails(KAPFault::kMethod)) return MemoryError();
  if (container == nullptr) return InvalidContainer();
  if (methodName == nullptr || procName == nullptr) return InvalidArgument();
  *out = FindMethod(*container, InterfaceCount(*container), *methodName, *procName);
  return nullptr;
}

// What the interfaces offer that were registered before those of `instanceName`.
KAPError* GetParentMethod(void** out, KAPContainer* container, KAPStringAtom* instanceName,
                          KAPStringAtom* methodName, KAPStringAtom* procName) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (Fails(KAPFault::kMethod)) return MemoryError();
  if (container == nullptr) return InvalidContainer();
  if (instanceName == nullptr || methodName == nullptr || procName == nullptr) {
    return InvalidArgument();
  }
  *out = FindMethod(*container, FirstInterface(*container, instanceName), *methodName, *procName);
  return nullptr;
}

void* GetInstance(KAPContainer* container, KAPStringAtom* instanceName) noexcept {
  void* instance = nullptr;
  if (Fails(KAPFault::kInstance) || container == nullptr || instanceName == nullptr) return nullptr;
  FindInstance(&instance, *container, instanceName);
  return instance;
}

KAPError* NGetInstance(void** out, KAPContainer* container, KAPStringAtom* instanceName) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (Fails(KAPFault::kInstance)) return MemoryError();
  if (container == nullptr) return InvalidContainer();
  if (instanceName == nullptr) return InvalidArgument();
  FindInstance(out, *container, instanceName);
  return nullptr;
}

KAPStringAtom* GetSignature(KAPContainer* container) noexcept {
  if (container == nullptr) return nullptr;
  gAtoms.AddRef(container->fType->fInstanceName);
  return container->fType->fInstanceName;
}

// Below zero while the container is being destroyed.
const int* DebugGetRefCountAddr(KAPContainer* container) noexcept {
  return container == nullptr ? nullptr : reinterpret_cast<const int*>(&container->fCount);
}

long GetOffsetToPrimaryInstance() noexcept {
  return static_cast<long>(offsetof(KAPContainer, fPrimary));
}

void RegisterContainers(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPContainerInterface>(
      binder, &NewFullContainer, &NewContainer, &CloneContainer, &AddRef, &Release,
      &DecrementWithoutDelete, &DeleteUnowned, &RegisterInterface, &RegisterInstance, &GetMethod,
      &GetParentMethod, &GetInstance, &NGetInstance, &GetSignature, &DebugGetRefCountAddr,
      &GetOffsetToPrimaryInstance);
}

// Types of one signature share a line; types without a slot of their own share theirs.
void CountContainers(Snapshot& books) {
  gContainerTypes.ForEach([&](const ContainerType& type) {
    if (type.fSlot >= kFirstTypeSlot && type.fSlot < kOtherTypesSlot) {
      books.Add(KAPResource::kContainer, type.fSignature, TallyTotal(type.fSlot));
    }
  });
  books.Add(KAPResource::kContainer, "(no signature)", TallyTotal(kUntypedSlot));
  books.Add(KAPResource::kContainer, "(other types)", TallyTotal(kOtherTypesSlot));
}

}  // namespace

const Service kContainerService = {&RegisterContainers, &CountContainers};

}  // namespace KAPHost
