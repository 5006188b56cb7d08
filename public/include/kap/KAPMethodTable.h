// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

#include "kap/KAPContainer.h"
#include "kap/KAPInterface.h"
#include "kap/KAPStringAtom.h"
#include "kap/LazyTerminate.h"
#include "kap/TOQWaitMutex.h"

// Method tables of containers that any component may have made. All containers of one
// implementation (one signature) have the same methods, so a table is fetched once per
// implementation and kept in a list, one list per client interface.
//
//   constinit TDelVTabList<KAPSimpleStreamInterface> tables;            // a static object
//   KAPCheck(tables.Method<"Write">(stream)(stream, bytes, size));  // or "invalid container"
//
// A table is refilled in place when the binder's unregister counter has moved; it is freed only
// when the binding ends. So a table is a cache whose size is bounded by the number of
// implementations.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Fills `out` with the methods of `container`, in slot order. Returns 1, also for a count of 0. A
// missing method: with `required` nonzero, stops and returns 0; otherwise its slot becomes null.
// Throws std::bad_alloc when the host makes no atom, and the error that the host returns.
// Threads: any.
[[nodiscard]] int KAPLoadMethodTable(const _t_KAPFTabEntry* entries, std::size_t count,
                                     KAPContainer* container, int required, void** out);

class KAPVTabListGeneric;

// The methods of one implementation: a header followed by the slots, in one block of host memory.
// Written under the list's lock and read without it, hence the atomics.
class KAPVTabGeneric {
 public:
  using Slot = std::atomic<void*>;  // one method; null when there is none

  // An empty table with `slotCount` slots, linked at the head of `list`, which owns it. Throws
  // TOQException "Math overflow exception" or what CKAPMemory::Alloc throws. Call under the lock.
  static KAPVTabGeneric* NewKAPVTab(std::size_t slotCount, KAPVTabListGeneric& list);

  // The slots, which follow the header.
  Slot* Slots() noexcept { return reinterpret_cast<Slot*>(this + 1); }
  const Slot* Slots() const noexcept { return reinterpret_cast<const Slot*>(this + 1); }

 private:
  friend class KAPVTabListGeneric;
  KAPVTabGeneric() = default;

  KAPVTabGeneric* fNext = nullptr;
  KAPVTabGeneric* fPrevious = nullptr;
  CKAPStringAtom fSignature;                // keeps the text of the key interned
  std::atomic<const char*> fKey = nullptr;  // the signature: the text pointer of fSignature
  std::atomic<unsigned long> fCount = 0;    // the unregister counter at the last fill
  std::atomic<bool> fFilled = false;        // whether the table was ever filled
  std::atomic<bool> fLoaded = false;        // whether the last fill found all methods
  bool fFilling = false;                    // whether a fill is under way; guarded by the lock
};

// Fills the slots with the methods of a container. Nonzero when it has all that are required.
using KAPVTabInitProc = int (*)(KAPContainer* container, int required, KAPVTabGeneric::Slot* slots);

// The tables of one client interface.
// Ownership: owns its tables. Slots handed out live until the binding ends.
// Threads: any, except DeleteAll and ForgetAll [binding thread].
class KAPVTabListGeneric : public LazyTerminate {
 public:
  // An empty list of tables with that many slots.
  constexpr explicit KAPVTabListGeneric(std::size_t slotCount) noexcept
      : LazyTerminate(JoinLater()), fSlotCount(slotCount) {}
  KAPVTabListGeneric(const KAPVTabListGeneric&) = delete;
  KAPVTabListGeneric& operator=(const KAPVTabListGeneric&) = delete;
  ~KAPVTabListGeneric() override;

  // The methods of the container's implementation. Null when the implementation lacks a method;
  // that result holds until the unregister counter moves. CKAPError "couldn't get signature" for
  // null or a container without a signature. Rethrows what the fill throws; the next call fills
  // again.
  const KAPVTabGeneric::Slot* GetVTabDynamic(KAPContainer* container, KAPVTabInitProc initProc);

  // The number of tables, for tests.
  std::size_t Count() const noexcept { return fTableCount.load(std::memory_order_relaxed); }

  void DeleteAll() noexcept;  // releases every table
  void ForgetAll() noexcept;  // forgets every table without calling the host

  // The end of the binding, as LazyTerminate has it.
  void Terminate() override { DeleteAll(); }
  void Kill() noexcept override { ForgetAll(); }

 private:
  friend class KAPVTabGeneric;

  static bool IsCurrent(const KAPVTabGeneric& table, const char* signature) noexcept;
  KAPVTabGeneric& FindOrAdd(const char* signature);
  void Fill(KAPVTabGeneric& table, const char* signature, KAPContainer* container,
            KAPVTabInitProc initProc);

  std::atomic<KAPVTabGeneric*> fLast = nullptr;  // the table used last; read without the lock
  KAPVTabGeneric* fHead = nullptr;
  std::atomic<std::size_t> fTableCount = 0;
  TOQWaitMutex fLock;
  const std::size_t fSlotCount;
};

// The fill of an interface's tables: looks up the methods that the interface declares.
template <class Interface>
struct TInterfaceConstructor {
  // A KAPVTabInitProc. Errors as KAPLoadMethodTable.
  static int InitProc(KAPContainer* container, int required, KAPVTabGeneric::Slot* slots) {
    void* methods[Interface::kCount] = {};
    const int loaded =
        KAPLoadMethodTable(Interface::kEntries, Interface::kCount, container, required, methods);
    for (std::size_t i = 0; i < Interface::kCount; ++i) {
      slots[i].store(methods[i], std::memory_order_relaxed);
    }
    return loaded;
  }
};

// The tables of one interface, typed: a static object, initialised at compile time. It joins the
// members of LazyTerminate with its first table, which is how its tables are released when the
// binding ends.
// Threads: any.
template <class Interface>
class TDelVTabList : public KAPVTabListGeneric {
 public:
  // An empty list.
  constexpr TDelVTabList() noexcept : KAPVTabListGeneric(Interface::kCount) {}

  // The methods of the container's implementation. CKAPError "invalid container" for null or when
  // the implementation lacks a method; other errors as GetVTabDynamic.
  const KAPVTabGeneric::Slot* InitVTab(KAPContainer* container) {
    const KAPVTabGeneric::Slot* methods =
        container ? GetVTabDynamic(container, &TInterfaceConstructor<Interface>::InitProc)
                  : nullptr;
    if (!methods) [[unlikely]]
      CKAPContainer::ThrowInvalidContainerException();
    return methods;
  }

  // One method: Method<"Read">(stream)(&count, stream, buffer, size). Errors as InitVTab. Call it
  // for each use, which costs a few loads: a pointer kept longer would not follow the host's
  // changes.
  template <TKAPName Name>
  auto Method(KAPContainer* container) {
    static_assert(Interface::template kHas<Name>, "the interface has no method of this name");
    if constexpr (Interface::template kHas<Name>) {
      // Null when another thread has just found that the interface is gone.
      void* method =
          InitVTab(container)[Interface::template kSlot<Name>].load(std::memory_order_relaxed);
      if (!method) [[unlikely]]
        CKAPContainer::ThrowInvalidContainerException();
      return reinterpret_cast<typename Interface::template Proc<Name>>(method);
    } else {
      return KAPNoMethod();
    }
  }
};

// The constructors of a typed container wrapper. Each checks that the container has the wrapper's
// methods, so wrapping a handle of another kind fails at once, not at the first use. `Wrapper`
// derives from it and has a static CheckMethods(handle) that throws; `Base` is
// KAPContainerBaseGeneric, or the wrapper whose methods `Wrapper` adds to.
template <class Wrapper, class Base>
class TKAPTypedContainer : public Base {
 public:
  // Adds a reference.
  explicit TKAPTypedContainer(KAPContainer* handle) : Base(handle) {
    Wrapper::CheckMethods(handle);
  }
  // Adopts the reference, and releases it when the check throws.
  TKAPTypedContainer(KAPContainer* handle, KAPAdopt adopt) : Base(handle, adopt) {
    Wrapper::CheckMethods(handle);
  }
  explicit TKAPTypedContainer(TKAPNewHandle<KAPContainer> made)
      : TKAPTypedContainer(std::move(made), KAPAdopt()) {}
};

}  // namespace KAP_T_MT
