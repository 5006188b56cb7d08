// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <type_traits>

#include "kap/KAPBinder.h"
#include "kap/KAPInterface.h"

// Tables of host procedures: the one mechanism that loads them and keeps them fresh. Nothing here
// throws; KAPInterfaceClient.h adds typed calls that do. Most code uses those.
//
// The host increments a counter whenever an interface is unregistered. A table remembers the value
// of the counter at which it was loaded; when the counter has moved, the table is loaded again
// before the next use. While the counter is unchanged, a call costs four loads and a comparison.
// Caching a bare pointer would save them, but could not follow the host's changes.
//
// Slots and counters are atomics, so threads may call while another one reloads; loads take a lock.
// A table is marked as fresh only with a counter value that was the same before and after its load.
// A thread that is inside a call while the interface is unregistered may still run the old
// procedure: a host keeps code in memory while others may be running it.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A table without its types. One per interface and component, a static object initialised at
// compile time; it lives as long as the component. `interfaceName`, `entries`, `traits` and `slots`
// are static as well and have `count` elements each.
// Threads: any, except Drop, Replace and ForgetAll [binding thread].
class KAPProcTable {
 public:
  // A table that is not loaded.
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

  // Whether the table is loaded and the counter has not moved since.
  bool IsFresh() const noexcept {
    return __atomic_load_n(fWatched.load(std::memory_order_acquire), __ATOMIC_ACQUIRE) ==
           fCount.load(std::memory_order_acquire);
  }

  // The value of the counter at which the table was loaded; 0 before.
  constexpr const std::atomic<unsigned long>& LoadedAt() const noexcept { return fCount; }

  // Loads unconditionally, without remembering the counter: the next use loads again.
  KAPLoadOutcome Load() noexcept;

  // Loads again until the counter does not move during the load, then remembers its value. A failed
  // load is not remembered, so the next use tries again.
  KAPLoadOutcome Reload() noexcept;

  // Reloads before a release, which must neither throw nor be skipped. When the whole table cannot
  // be loaded, looks up the releasing procedures one by one, so that a procedure missing elsewhere
  // in the table leaks no reference.
  void ReloadForRelease() noexcept;

  // Makes the table stale and its releasing methods no-ops until the table is loaded again. A
  // release alone does not load it.
  void Drop() noexcept;

  // Stores another procedure in a slot until the table is loaded again. A release alone does not
  // load it.
  void Replace(std::size_t slot, void* proc) noexcept;

  // The end of the binding: makes every loaded table stale and its releasing methods no-ops. Calls
  // nothing in the host.
  static void ForgetAll() noexcept;

 private:
  void Enlist() noexcept;
  void Forget() noexcept;
  void RememberLoaded(unsigned long count) noexcept;

  // The counter that a table watches until it is loaded. It equals no table's initial count, so a
  // table that was never loaded needs no flag of its own in IsFresh.
  static const unsigned long kNeverFresh;
  static constinit std::atomic<KAPProcTable*> fListedTables;

  const char* const fInterfaceName;
  const _t_KAPFTabEntry* const fEntries;
  const KAPTraits* const fTraits;
  const std::size_t fEntryCount;
  std::atomic<void*>* const fSlots;
  std::atomic<const unsigned long*> fWatched = &kNeverFresh;  // once loaded: the host's counter
  std::atomic<unsigned long> fCount = 0;
  std::atomic<bool> fListed = false;
  std::atomic<bool> fDropped = false;
  KAPProcTable* fNextListed = nullptr;
};

// The procedure table of one interface, typed. Static only: all code of a component that uses the
// interface shares the table.
// Threads: any, except Drop and Replace [binding thread].
template <class Interface>
class TKAPProcTable {
 public:
  // Reloads the table if it is stale. Whether it is loaded and current now.
  static bool TryRefresh() noexcept {
    return fTable.IsFresh() || fTable.Reload() == KAPLoadOutcome::kLoaded;
  }

  // The slots, and the value of the unregister counter at which they were loaded: to read, for
  // debugging.
  static constexpr const std::atomic<void*> (&Slots() noexcept)[Interface::kCount] {
    return fProcTable;
  }
  static constexpr const std::atomic<unsigned long>& LoadedAt() noexcept {
    return fTable.LoadedAt();
  }

  // Calls a method of a table that is known to be loaded, for example after TryRefresh:
  // CallLoaded<"GetCString">(atom).
  template <TKAPName Method, class... Args>
  requires(!Interface::template kReturnsError<Method>) static auto CallLoaded(Args... args) {
    static_assert(Interface::template kHas<Method>, "the interface has no method of this name");
    if constexpr (Interface::template kHas<Method>) {
      return Slot<Method>()(args...);
    } else {
      return KAPNoResult();
    }
  }

  // The same for a method that returns an error: ignoring it would leak it.
  template <TKAPName Method, class... Args>
  requires(Interface::template kReturnsError<Method>)
      [[nodiscard]] static KAPError* CallLoaded(Args... args) {
    return Slot<Method>()(args...);
  }

  // Calls a method that releases something, from where nothing may throw. False: not called,
  // because no host is bound or because the host no longer has the procedure; what it would have
  // released leaks then, and no code that may be gone is run.
  template <TKAPName Method, class... Args>
  static bool CallReleasing(Args... args) noexcept {
    static_assert(Interface::template kHas<Method>, "the interface has no method of this name");
    if constexpr (Interface::template kHas<Method>) {
      static_assert(Interface::kTraits[Interface::template kSlot<Method>].fNoOpUnbound,
                    "the method is not declared as a no-op after the binding");
      if (!fTable.IsFresh()) [[unlikely]]
        fTable.ReloadForRelease();
      const auto proc = Slot<Method>();
      if (!proc) [[unlikely]]
        return false;
      proc(args...);
    }
    return true;
  }

  static void Drop() noexcept { fTable.Drop(); }  // see KAPProcTable::Drop

  // See KAPProcTable::Replace.
  template <TKAPName Method, class Proc>
  static void Replace(Proc proc) noexcept {
    static_assert(Interface::template kHas<Method>, "the interface has no method of this name");
    if constexpr (Interface::template kHas<Method>) {
      using Declared = typename Interface::template Proc<Method>;
      static_assert(std::is_convertible_v<Proc, Declared>,
                    "a procedure does not have the type that its method declares");
      if constexpr (std::is_convertible_v<Proc, Declared>) {
        fTable.Replace(Interface::template kSlot<Method>,
                       reinterpret_cast<void*>(static_cast<Declared>(proc)));
      }
    }
  }

 protected:
  // The procedure of a slot, null before the table is loaded.
  template <TKAPName Method>
  static auto Slot() noexcept {
    return reinterpret_cast<typename Interface::template Proc<Method>>(
        fProcTable[Interface::template kSlot<Method>].load(std::memory_order_relaxed));
  }

  // The slots, and the table over them.
  inline static constinit std::atomic<void*> fProcTable[Interface::kCount] = {};
  inline static constinit KAPProcTable fTable{Interface::kName, Interface::kEntries,
                                              Interface::kTraits, Interface::kCount, fProcTable};
};

}  // namespace KAP_T_MT
