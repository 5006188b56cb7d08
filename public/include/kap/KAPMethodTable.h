#pragma once

#include <atomic>
#include <cstddef>

#include "kap/KAPContainer.h"
#include "kap/KAPInterface.h"
#include "kap/KAPStringAtom.h"
#include "kap/LazyTerminate.h"
#include "kap/TOQWaitMutex.h"

// Method tables of containers that other components made. All containers of one implementation (one
// signature) offer the same methods, so a table is fetched once per implementation and kept in a
// list, one list per client interface. Tables are refreshed in place when the binder's unregister
// counter has moved. They stay while the runtime is bound.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Fills `out` with the methods that `container` offers, in slot order. With `required` nonzero the
// first missing one ends the load with 0, else its slot becomes null. 1 otherwise. Throws
// std::bad_alloc when the host makes no atom, and an error that the host returns.
int KAPLoadMethodTable(const _t_KAPFTabEntry* entries, std::size_t count, KAPContainer* container,
                       int required, void** out);

class KAPVTabListGeneric;

// The methods of one implementation. Written under the list's lock and read without it: hence the
// atomics.
class KAPVTabGeneric {
 public:
  using Slot = std::atomic<void*>;

  // An empty table with room for `slotCount` methods, in host memory, linked at the head of `list`.
  static KAPVTabGeneric* NewKAPVTab(std::size_t slotCount, KAPVTabListGeneric& list);

  Slot* Slots() noexcept { return reinterpret_cast<Slot*>(this + 1); }
  const Slot* Slots() const noexcept { return reinterpret_cast<const Slot*>(this + 1); }

 private:
  friend class KAPVTabListGeneric;
  KAPVTabGeneric() = default;

  KAPVTabGeneric* fNext = nullptr;
  KAPVTabGeneric* fPrevious = nullptr;
  CKAPStringAtom fSignature;                // keeps the key's text interned
  std::atomic<const char*> fKey = nullptr;  // its text pointer
  std::atomic<unsigned long> fCount = 0;    // the unregister counter of the last fill
  std::atomic<bool> fFilled = false;        // whether there was one
  std::atomic<bool> fLoaded = false;        // whether it found the methods
  bool fFilling = false;                    // whether one is under way; read under the lock
};

// Fills the slots with the methods that a container offers. Nonzero: all that are required are there.
using KAPVTabInitProc = int (*)(KAPContainer* container, int required, KAPVTabGeneric::Slot* slots);

// The tables of one client interface. Any thread.
class KAPVTabListGeneric : public LazyTerminate {
 public:
  constexpr explicit KAPVTabListGeneric(std::size_t slotCount) noexcept
      : LazyTerminate(JoinLater()), fSlotCount(slotCount) {}
  KAPVTabListGeneric(const KAPVTabListGeneric&) = delete;
  KAPVTabListGeneric& operator=(const KAPVTabListGeneric&) = delete;
  ~KAPVTabListGeneric() override;

  // The methods of the container's implementation, or null when it does not offer them. CKAPError
  // "couldn't get signature" for null or a container without one. What the fill throws passes on, and
  // the next call fills the table again.
  const KAPVTabGeneric::Slot* GetVTabDynamic(KAPContainer* container, KAPVTabInitProc initProc);

  std::size_t Count() const noexcept { return fTableCount.load(std::memory_order_relaxed); }

  void DeleteAll() noexcept;  // frees every table
  void ForgetAll() noexcept;  // the same without calling the host

  void Terminate() override { DeleteAll(); }
  void Kill() noexcept override { ForgetAll(); }

 private:
  friend class KAPVTabGeneric;

  static bool IsCurrent(const KAPVTabGeneric& table, const char* signature) noexcept;
  KAPVTabGeneric& FindOrAdd(const char* signature);
  void Fill(KAPVTabGeneric& table, const char* signature, KAPContainer* container,
            KAPVTabInitProc initProc);

  std::atomic<KAPVTabGeneric*> fLast = nullptr;  // the table used last: read without the lock
  KAPVTabGeneric* fHead = nullptr;
  std::atomic<std::size_t> fTableCount = 0;
  TOQWaitMutex fLock;
  const std::size_t fSlotCount;
};

template <class Interface>
struct TInterfaceConstructor {
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

// The list of one interface: a static object, initialised at compile time, that is emptied when the
// runtime unbinds itself.
template <class Interface>
class TDelVTabList : public KAPVTabListGeneric {
 public:
  constexpr TDelVTabList() noexcept : KAPVTabListGeneric(Interface::kCount) {}

  // The methods of the container's implementation; CKAPError "invalid container" for null or when
  // it does not offer them. See GetVTabDynamic for other errors.
  const KAPVTabGeneric::Slot* InitVTab(KAPContainer* container) {
    const KAPVTabGeneric::Slot* methods =
        container ? GetVTabDynamic(container, &TInterfaceConstructor<Interface>::InitProc)
                  : nullptr;
    if (!methods) [[unlikely]]
      CKAPContainer::ThrowInvalidContainerException();
    return methods;
  }

  // One of them: Method<"Read">(stream)(...). Each call looks it up again, which costs a few loads: a
  // kept pointer would not follow the host's changes.
  template <TKAPName Name>
  auto Method(KAPContainer* container) {
    // Null when another thread has just found that the interface is gone.
    void* method =
        InitVTab(container)[Interface::template kSlot<Name>].load(std::memory_order_relaxed);
    if (!method) [[unlikely]]
      CKAPContainer::ThrowInvalidContainerException();
    return reinterpret_cast<typename Interface::template Proc<Name>>(method);
  }
};

}  // namespace KAP_T_MT
