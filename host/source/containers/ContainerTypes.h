#pragma once

#include <atomic>
#include <mutex>

#include "accounting/Accounting.h"
#include "atoms/AtomTable.h"

namespace KAPHost {

// The names of an instance and of an interface that it offers, and what deletes the instance; each
// may be null. Made once for all three, it holds the atoms, so that containers need no references of
// their own, and keeps the delete procedure out of the records: they fit a smaller size of malloc.
struct ContainerType {
  ContainerType* fNext;
  KAPStringAtom* fInstanceName;
  KAPStringAtom* fInterfaceName;
  KAPDeleteProc fDelete;
  const char* fSignature;           // the text of the instance name, or null
  unsigned fSlot;                   // of the tally
  mutable std::atomic<long> fUses;  // by equipment; the containers themselves are in the tally
};

// All types of the process. Look-ups take no lock: types only join at the head of a chain, and
// leave when a host is destroyed, while nothing else happens.
class ContainerTypes {
 public:
  constexpr ContainerTypes() = default;

  // Null when out of memory.
  const ContainerType* Find(KAPStringAtom* instanceName, KAPStringAtom* interfaceName,
                            KAPDeleteProc deleteInstance) noexcept {
    const std::atomic<ContainerType*>& bucket =
        fBuckets[Bucket(instanceName, interfaceName, deleteInstance)];
    const ContainerType* type =
        Search(bucket.load(std::memory_order_acquire), instanceName, interfaceName, deleteInstance);
    return type != nullptr ? type : Add(instanceName, interfaceName, deleteInstance);
  }

  template <class Visit>
  void ForEach(Visit visit) {
    const std::lock_guard lock(fMutex);
    for (const auto& bucket : fBuckets) {
      for (const ContainerType* type = bucket.load(std::memory_order_relaxed); type != nullptr;
           type = type->fNext) {
        visit(*type);
      }
    }
  }

  // Gives up the types that no container uses. Nobody else may be using the host.
  void ReleaseUnused() noexcept;

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
    while (chain != nullptr &&
           (chain->fInstanceName != instanceName || chain->fInterfaceName != interfaceName ||
            chain->fDelete != deleteInstance)) {
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
  bool fSlotTaken[kTallySlots] = {};
};

extern constinit ContainerTypes gContainerTypes;

}  // namespace KAPHost
