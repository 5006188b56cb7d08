#pragma once

#include <atomic>
#include <cstddef>

#include "kap/KAPBinder.h"
#include "kap/KAPInterface.h"

// The one mechanism by which tables of host procedures are loaded, kept fresh and called.
//
// The host raises a counter whenever an interface is unregistered. A table remembers the counter at
// which it was loaded and is loaded again before the next use once the counter has moved; while it
// has not, a call costs two loads and a comparison. Slots and counters are atomics, so threads may
// meet at a reload, and the last to finish has seen the counter as it stands. A thread that is
// calling while an interface is unregistered may still reach the old procedure, as it would have a
// moment earlier: a host keeps code that others may be running.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// What all tables share, whatever their interface. One per interface and component,
// constant-initialised.
class KAPProcTable {
 public:
  constexpr KAPProcTable(const char* interfaceName, const _t_KAPFTabEntry* entries,
                         std::size_t count, std::atomic<void*>* slots) noexcept
      : fInterfaceName(interfaceName), fEntries(entries), fEntryCount(count), fSlots(slots) {}
  KAPProcTable(const KAPProcTable&) = delete;
  KAPProcTable& operator=(const KAPProcTable&) = delete;

  bool IsFresh() const noexcept {
    return __atomic_load_n(fWatched.load(std::memory_order_acquire), __ATOMIC_ACQUIRE) ==
           fCount.load(std::memory_order_acquire);
  }

  // Makes the table usable. A single procedure missing in a bound runtime: CKAPError with an empty
  // message; anything else that prevents the load: CKAPError "Missing Interface". A failed load is
  // tried again at the next use.
  void Refresh() {
    if (!IsFresh()) [[unlikely]]
      Reload();
  }

  // The same, answering false instead of raising.
  bool TryRefresh() noexcept { return IsFresh() || TryReload(); }

  // Loads unconditionally, without remembering the counter. False, or the empty-message error, as
  // KAPLoadProcTable.
  bool Load();

  // Forgets which binding the table belongs to, so that its next use loads it. The slots keep what
  // they hold.
  static void ForgetAll() noexcept;

 private:
  void Reload();
  bool TryReload() noexcept;
  void RememberLoaded(unsigned long count) noexcept;

  static const unsigned long kNeverFresh;  // a counter that equals no table's initial count
  static constinit std::atomic<KAPProcTable*> fLoadedTables;

  const char* const fInterfaceName;
  const _t_KAPFTabEntry* const fEntries;
  const std::size_t fEntryCount;
  std::atomic<void*>* const fSlots;
  std::atomic<const unsigned long*> fWatched =
      &kNeverFresh;  // the host's counter once the table is loaded
  std::atomic<unsigned long> fCount = 0;
  std::atomic<bool> fListed = false;
  KAPProcTable* fNextLoaded = nullptr;
};

// The procedure table of one host-global interface, and typed calls through it. Static only.
template <class Interface>
class TKAPInterfaceClient {
 public:
  // Loads the table whether or not it is stale, see KAPLoadProcTable. The argument is ignored.
  static bool LoadProcTable(bool) { return fTable.Load(); }

  // Makes sure that the table is loaded and current; see KAPProcTable.
  static void Refresh() { fTable.Refresh(); }
  static bool TryRefresh() noexcept { return fTable.TryRefresh(); }

  // Calls a method, e.g. Call<"NewStringAtom">(text). Raises what Refresh raises.
  template <TKAPName Method, class... Args>
  static auto Call(Args... args) {
    fTable.Refresh();
    return CallLoaded<Method>(args...);
  }

  // The same behind a successful TryRefresh.
  template <TKAPName Method, class... Args>
  static auto CallLoaded(Args... args) {
    return Slot<Method>()(args...);
  }

  // Calls a method that gives something back, or counts a reference, from where nothing may be
  // raised. Once the runtime is unbound only the stand-by procedure of the slot is called, if any.
  // A table that is gone while bound ends the process.
  template <TKAPName Method, class... Args>
  static void CallOrStandBy(Args... args) noexcept {
    if (!fTable.IsFresh()) [[unlikely]]
      RefreshIfBound();
    if (const auto proc = Slot<Method>()) proc(args...);
  }

  // Puts a stand-by procedure into a slot, for the time when the host can no longer be called.
  template <TKAPName Method>
  static void StandBy(typename Interface::template Proc<Method> proc) noexcept {
    fProcTable[Interface::template kSlot<Method>].store(reinterpret_cast<void*>(proc),
                                                        std::memory_order_relaxed);
  }

 private:
  template <TKAPName Method>
  static auto Slot() noexcept {
    return reinterpret_cast<typename Interface::template Proc<Method>>(
        fProcTable[Interface::template kSlot<Method>].load(std::memory_order_relaxed));
  }
  static void RefreshIfBound() {
    if (KAPIsBound()) fTable.Refresh();
  }

  inline static constinit std::atomic<void*> fProcTable[Interface::kCount] = {};
  inline static constinit KAPProcTable fTable{Interface::kName, Interface::kEntries,
                                              Interface::kCount, fProcTable};
};

}  // namespace KAP_T_MT
