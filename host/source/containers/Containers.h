#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include "containers/ContainerTypes.h"
#include "kap/KAPTypes.h"

namespace KAPHost {

// What few containers have: further interfaces and instances, and for a clone the container that it
// was made of. The original is held by a reference, since its instances are the clone's too.
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
  // Everything that `other` has, its instances without their delete procedures.
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

// The count while a container is being destroyed: whatever is added to it or taken off, it stays
// below zero.
inline constexpr int kDying = -(1 << 30);

}  // namespace KAPHost

// A container record, one allocation. The primary instance and the signature are read in place by
// components.
struct KAPContainer {
  std::atomic<int> fCount;
  void* fPrimary;
  const char* fSignature;
  const KAPHost::ContainerType* fType;
  KAPHost::ContainerEquipment* fEquipment;
};

static_assert(offsetof(KAPContainer, fSignature) ==
              offsetof(KAPContainer, fPrimary) + sizeof(void*));
static_assert(sizeof(std::atomic<int>) == sizeof(int));

namespace KAPHost {

// With one reference; null when out of memory.
KAPContainer* NewContainerRecord(const ContainerType& type, void* instance) noexcept;

// A new container that shows the same instances and interfaces and keeps the original alive, since
// it owns none of them. Null when the original is being destroyed. Throws std::bad_alloc.
KAPContainer* CloneContainerRecord(KAPContainer& original);

// False when the container is being destroyed.
bool AddContainerRef(KAPContainer& container) noexcept;
void ReleaseContainer(KAPContainer& container) noexcept;
// Gives up a reference and lets the container live, even with none.
void DropContainerRef(KAPContainer& container) noexcept;
// Destroys a container that has no reference.
void DeleteUnownedContainer(KAPContainer& container) noexcept;

}  // namespace KAPHost
