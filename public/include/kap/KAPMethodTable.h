#pragma once

#include <atomic>
#include <cstddef>

#include "kap/KAPBinder.h"
#include "kap/KAPContainer.h"
#include "kap/KAPInterface.h"
#include "kap/KAPStringAtom.h"
#include "kap/LazyTerminate.h"
#include "kap/TOQWaitMutex.h"

// Method tables of containers that other components made. All containers of one implementation (one
// signature) offer the same methods, so a table is fetched once per implementation and kept in a
// list, one list per client interface. Tables are refreshed in place when the binder's unregister
// counter has moved and are never removed while the runtime is bound, so a wrapper may keep a
// pointer to its slots.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

class KAPVTabListGeneric;

// The methods of one implementation. Written under the list's lock, read without it: hence the
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

// Fills the slots with the methods that a container offers; nonzero when all that are required are
// there.
using KAPVTabInitProc = int (*)(KAPContainer* container, int required, KAPVTabGeneric::Slot* slots);

// The tables of one client interface. Any thread.
class KAPVTabListGeneric {
 public:
  explicit KAPVTabListGeneric(std::size_t slotCount) noexcept : fSlotCount(slotCount) {}
  KAPVTabListGeneric(const KAPVTabListGeneric&) = delete;
  KAPVTabListGeneric& operator=(const KAPVTabListGeneric&) = delete;
  ~KAPVTabListGeneric();

  // The methods of the container's implementation, or null when it does not offer them. CKAPError
  // "couldn't get signature" for null or a container without one; what the fill raises passes, and
  // the table is filled again next time.
  const KAPVTabGeneric::Slot* GetVTabDynamic(KAPContainer* container, KAPVTabInitProc initProc);

  std::size_t Count() const noexcept { return fTableCount.load(std::memory_order_relaxed); }

  void DeleteAll() noexcept;  // gives every table back to the host
  void ForgetAll() noexcept;  // the same without calling it

 private:
  friend class KAPVTabGeneric;

  static bool IsCurrent(const KAPVTabGeneric& table, const char* signature) noexcept;
  KAPVTabGeneric& FindOrAdd(const char* signature);
  void Fill(KAPVTabGeneric& table, const char* signature, KAPContainer* container,
            KAPVTabInitProc initProc);

  std::atomic<KAPVTabGeneric*> fLast = nullptr;  // the table used last: the unlocked way
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

// A static list that is emptied when the runtime unbinds itself.
template <class Interface>
class TDelVTabList : public LazyTerminate {
 public:
  void Terminate() override { fList.DeleteAll(); }
  void Kill() noexcept override { fList.ForgetAll(); }

  // The methods of the container's implementation; CKAPError "invalid container" for null or when
  // it does not offer them. See GetVTabDynamic for other errors.
  const KAPVTabGeneric::Slot* InitVTab(KAPContainer* container) {
    const KAPVTabGeneric::Slot* methods =
        container ? fList.GetVTabDynamic(container, &TInterfaceConstructor<Interface>::InitProc)
                  : nullptr;
    if (!methods) [[unlikely]]
      CKAPContainer::ThrowInvalidContainerException();
    return methods;
  }

  // One of them: Method<"Read">(stream)(...). It is looked up anew at each call, a few loads, since
  // a kept pointer would not follow the host's changes.
  template <TKAPName Name>
  auto Method(KAPContainer* container) {
    // Empty when another thread has just found that the interface is gone.
    void* method =
        InitVTab(container)[Interface::template kSlot<Name>].load(std::memory_order_relaxed);
    if (!method) [[unlikely]]
      CKAPContainer::ThrowInvalidContainerException();
    return reinterpret_cast<typename Interface::template Proc<Name>>(method);
  }

 private:
  KAPVTabListGeneric fList{Interface::kCount};
};

}  // namespace KAP_T_MT
