#pragma once

#include <atomic>
#include <cstddef>

#include "kap/KAPBinder.h"
#include "kap/KAPInterface.h"

// The one mechanism that loads tables of host procedures and keeps them fresh. Nothing here throws;
// KAPInterfaceClient.h adds typed calls that do.
//
// The host raises a counter whenever an interface is unregistered. A table remembers the counter at
// which it was loaded, and once the counter has moved it is loaded again before the next use. Until
// then a call costs two loads and a comparison. Slots and counters are atomics, so several threads
// may reload a table at once; the last one to finish has seen the counter as it stands. A thread that
// is in a call while an interface is unregistered may still reach the old procedure: a host keeps
// code that others may be running.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A table without its types. One per interface and component, initialised at compile time.
class KAPProcTable {
 public:
  constexpr KAPProcTable(const char* interfaceName, const _t_KAPFTabEntry* entries,
                         const KAPTraits* traits, std::size_t count,
                         std::atomic<void*>* slots) noexcept
      : fInterfaceName(interfaceName),
        fEntries(entries),
        fTraits(traits),
        fEntryCount(count),
        fSlots(slots) {}
  KAPProcTable(const KAPProcTable&) = delete;
  KAPProcTable& operator=(const KAPProcTable&) = delete;

  bool IsFresh() const noexcept {
    return __atomic_load_n(fWatched.load(std::memory_order_acquire), __ATOMIC_ACQUIRE) ==
           fCount.load(std::memory_order_acquire);
  }

  // Loads unconditionally, without remembering the counter.
  KAPLoadOutcome Load() noexcept;

  // Loads until the counter stands still and remembers it. A failed load is tried again at the next
  // use.
  KAPLoadOutcome Reload() noexcept;

  // Before a call that must not throw and cannot be left out: a release. When the table cannot be
  // loaded as a whole, the procedures that release are looked up one by one, so that an entry
  // missing elsewhere in the table costs no reference.
  void ReloadForRelease() noexcept;

  // Drops the table: it is stale, and the methods declared as no-ops do nothing until it is loaded
  // again, which a release alone does not do.
  void Drop() noexcept;

  // The end of the binding: every table is stale from now on, and the methods declared as
  // no-ops do nothing. Calls nothing in the host.
  static void ForgetAll() noexcept;

 private:
  void Enlist() noexcept;
  void Forget() noexcept;
  void RememberLoaded(unsigned long count) noexcept;

  static const unsigned long kNeverFresh;  // a counter that equals no table's initial count
  static constinit std::atomic<KAPProcTable*> fListedTables;

  const char* const fInterfaceName;
  const _t_KAPFTabEntry* const fEntries;
  const KAPTraits* const fTraits;
  const std::size_t fEntryCount;
  std::atomic<void*>* const fSlots;
  std::atomic<const unsigned long*> fWatched =
      &kNeverFresh;  // the host's counter once the table is loaded
  std::atomic<unsigned long> fCount = 0;
  std::atomic<bool> fListed = false;
  std::atomic<bool> fDropped = false;
  KAPProcTable* fNextListed = nullptr;
};

// The procedure table of one host-global interface. Static only.
template <class Interface>
class TKAPProcTable {
 public:
  // Whether the table is loaded and current, once it has been reloaded if need be.
  static bool TryRefresh() noexcept {
    return fTable.IsFresh() || fTable.Reload() == KAPLoadOutcome::kLoaded;
  }

  // Calls a method of a table that is known to be loaded, e.g. CallLoaded<"GetCString">(atom).
  template <TKAPName Method, class... Args>
  static auto CallLoaded(Args... args) {
    return Slot<Method>()(args...);
  }

  // Calls a method that is declared a no-op after the binding, from where nothing may throw. False: it
  // was not called, after the binding or because the host no longer has it. What it would release is
  // lost then.
  template <TKAPName Method, class... Args>
  static bool CallReleasing(Args... args) noexcept {
    static_assert(Interface::kTraits[Interface::template kSlot<Method>].fNoOpUnbound,
                  "the method is not declared as a no-op after the binding");
    if (!fTable.IsFresh()) [[unlikely]]
      fTable.ReloadForRelease();
    const auto proc = Slot<Method>();
    if (!proc) [[unlikely]]
      return false;
    proc(args...);
    return true;
  }

  static void Drop() noexcept { fTable.Drop(); }

  // Puts another procedure into a slot, until the table is loaded again.
  template <TKAPName Method>
  static void Replace(typename Interface::template Proc<Method> proc) noexcept {
    fProcTable[Interface::template kSlot<Method>].store(reinterpret_cast<void*>(proc),
                                                        std::memory_order_relaxed);
  }

 protected:
  template <TKAPName Method>
  static auto Slot() noexcept {
    return reinterpret_cast<typename Interface::template Proc<Method>>(
        fProcTable[Interface::template kSlot<Method>].load(std::memory_order_relaxed));
  }

  inline static constinit std::atomic<void*> fProcTable[Interface::kCount] = {};
  inline static constinit KAPProcTable fTable{Interface::kName, Interface::kEntries,
                                              Interface::kTraits, Interface::kCount, fProcTable};
};

}  // namespace KAP_T_MT
