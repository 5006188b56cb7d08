// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <mutex>

#include "accounting/Accounting.h"
#include "atoms/AtomTable.h"

namespace KAPHost {

// The name of an instance, the name of its interface and the procedure that deletes the instance;
// each may be null. There is one type for each combination. It holds the atoms, so that containers
// need no references of their own, and keeps the delete procedure out of the container records,
// which then fit a smaller class of sizes.
struct ContainerType {
  ContainerType* fNext;
  KAPStringAtom* fInstanceName;
  KAPStringAtom* fInterfaceName;
  KAPDeleteProc fDelete;
  const char* fSignature;           // the text of the instance name, or null
  unsigned fSlot;                   // of the accounting
  mutable std::atomic<long> fUses;  // by equipment; the accounting counts the containers
};

// All types of the process. Look-ups take no lock: a new type becomes the head of a chain, and
// types are removed only when a host is destroyed, while by contract no other call runs.
class ContainerTypes {
 public:
  constexpr ContainerTypes() = default;

  // Null when out of memory.
  const ContainerType* Find(KAPStringAtom* instanceName, KAPStringAtom* interfaceName,
                            KAPDeleteProc deleteInstance) noexcept {
    const ContainerType* type = FindKnown(instanceName, interfaceName, deleteInstance);
    return type ? type : Add(instanceName, interfaceName, deleteInstance);
  }
  // Null when there is none yet.
  const ContainerType* FindKnown(const KAPStringAtom* instanceName,
                                 const KAPStringAtom* interfaceName,
                                 KAPDeleteProc deleteInstance) const noexcept {
    const auto& bucket = fBuckets[Bucket(instanceName, interfaceName, deleteInstance)];
    return Search(bucket.load(std::memory_order_acquire), instanceName, interfaceName,
                  deleteInstance);
  }

  template <class Visit>
  void ForEach(Visit visit) {
    const std::lock_guard lock(fMutex);
    for (const auto& bucket : fBuckets) {
      for (const ContainerType* type = bucket.load(std::memory_order_relaxed); type;
           type = type->fNext) {
        visit(*type);
      }
    }
  }

  // Whether a container has the type. Types that share a slot of the accounting count as one.
  static bool IsUsed(const ContainerType& type) noexcept {
    return type.fUses.load(std::memory_order_relaxed) != 0 || TotalOf(type.fSlot) != Holding();
  }

  // Deletes the types that no container uses. No other thread may use the host meanwhile.
  void ReleaseUnused() noexcept;

  // Guards the additions, for the time of a fork.
  std::mutex& Mutex() noexcept { return fMutex; }

 private:
  static constexpr unsigned kBuckets = 256;

  static std::size_t Bucket(const KAPStringAtom* instanceName, const KAPStringAtom* interfaceName,
                            KAPDeleteProc deleteInstance) noexcept {
    constexpr std::size_t kFactor = 0x9E3779B97F4A7C15;
    const std::size_t a = reinterpret_cast<std::size_t>(instanceName);
    const std::size_t b = reinterpret_cast<std::size_t>(interfaceName);
    const std::size_t c = reinterpret_cast<std::size_t>(deleteInstance);
    return ((a * 3 + b + c * 5) * kFactor) >> 56;
  }
  static const ContainerType* Search(const ContainerType* chain, const KAPStringAtom* instanceName,
                                     const KAPStringAtom* interfaceName,
                                     KAPDeleteProc deleteInstance) noexcept {
    while (chain && (chain->fInstanceName != instanceName ||
                     chain->fInterfaceName != interfaceName || chain->fDelete != deleteInstance)) {
      chain = chain->fNext;
    }
    return chain;
  }
  const ContainerType* Add(KAPStringAtom* instanceName, KAPStringAtom* interfaceName,
                           KAPDeleteProc deleteInstance) noexcept;
  unsigned TakeSlot() noexcept;
  void Delete(ContainerType* type) noexcept;

  std::mutex fMutex;
  std::atomic<ContainerType*> fBuckets[kBuckets] = {};
  bool fSlotTaken[kSlots] = {};
};

[[gnu::visibility("hidden")]] extern constinit ContainerTypes gContainerTypes;

}  // namespace KAPHost
