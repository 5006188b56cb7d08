// SPDX-License-Identifier: MIT
#include "component/HostTap.h"

#include <utility>

namespace KAPCheck {

namespace {

using namespace KAP_T_MT;

// The tap of the process. The procedures are plain functions, so there is one.
HostTap* gTap = nullptr;

}  // namespace

// What the procedures note in the tap.
struct TapNotes {
  static void Before(const char* interfaceName, const char* methodName, bool isMoved) {
    // The binder's own procedures stay where they are: a component fetches them once.
    const bool isOld = gTap->fIsMoved && !isMoved;
    if (isOld || gTap->fIsForbidden) gTap->Misplaced(interfaceName, methodName);
  }
  static bool HasFired() { return gTap->fHost.Fired(); }
  static void Failed(const char* interfaceName, const char* methodName) {
    const std::lock_guard lock(gTap->fMutex);
    gTap->fFailed = std::string(interfaceName) + ", " + methodName;
  }
  static void Registered(const char* interfaceName, const char* methodName, const char* procName) {
    if (!interfaceName || !methodName || !procName) return;
    const std::lock_guard lock(gTap->fMutex);
    gTap->fRegistrations.insert({interfaceName, methodName, procName});
  }
  static void* LookUp(const char* interfaceName, const char* methodName, const char* procName) {
    if (gTap->fIsForbidden) gTap->Misplaced("a look-up", methodName ? methodName : "(null)");
    if (gTap->FailsLookUp(interfaceName, methodName)) return nullptr;
    return gTap->fGetProc(interfaceName, methodName, procName);
  }
};

namespace {

// A procedure of the host that one of the tap calls. `kIsMoved`: registered by MoveProcedures.
template <class Interface, std::size_t kSlot, bool kIsMoved, class Proc>
struct TTap;
template <class Interface, std::size_t kSlot, bool kIsMoved, class Result, class... Args>
struct TTap<Interface, kSlot, kIsMoved, Result (*)(Args...)> {
  static constexpr auto kEntry = Interface::kEntries[kSlot];
  static constexpr bool kIsBinder = std::is_same_v<Interface, KAPBinderInterface>;
  static inline Result (*fProc)(Args...) = nullptr;

  static Result Call(Args... args) {
    TapNotes::Before(Interface::kName, kEntry.fMethodName, kIsMoved || kIsBinder);
    if constexpr (kIsBinder && sizeof...(Args) == 4) NoteRegistration(args...);
    const bool hadFired = TapNotes::HasFired();
    struct After {
      ~After() {
        if (!fHadFired && TapNotes::HasFired()) {
          TapNotes::Failed(Interface::kName, kEntry.fMethodName);
        }
      }
      const bool fHadFired;
    };
    const After after{hadFired};
    return fProc(args...);
  }
  static void NoteRegistration(const char* interfaceName, const char* methodName,
                               const char* procName, void*) {
    TapNotes::Registered(interfaceName, methodName, procName);
  }
  static void Install(KAPHost::Host& host, void* proc) {
    fProc = reinterpret_cast<decltype(fProc)>(proc);
    host.Register(Interface::kName, kEntry.fMethodName, kEntry.fProcName,
                  reinterpret_cast<void*>(&Call));
  }
};

template <class Interface, class Visitor>
void ForEachSlot(Visitor visit) {
  [&]<std::size_t... kSlots>(std::index_sequence<kSlots...>) {
    (visit.template operator()<kSlots, typename Interface::template ProcAt<kSlots>>(), ...);
  }
  (std::make_index_sequence<Interface::kCount>());
}

}  // namespace

HostTap::HostTap(KAPHost::Host& host) : fHost(host), fGetProc(host.GetProcAddress()) {
  gTap = this;
  KAPHostInterfaceSet::ForEach([&]<class Interface>() {
    ForEachSlot<Interface>([&]<std::size_t kSlot, class Proc>() {
      constexpr auto entry = Interface::kEntries[kSlot];
      TTap<Interface, kSlot, false, Proc>::Install(
          host, host.Find(Interface::kName, entry.fMethodName, entry.fProcName));
    });
  });
}

HostTap::~HostTap() { gTap = nullptr; }

KAPGetProcAddressProc HostTap::GetProcAddress() const { return &TapNotes::LookUp; }

std::set<ProcNames> HostTap::Registrations() const {
  const std::lock_guard lock(fMutex);
  return fRegistrations;
}

std::string HostTap::TakeFailed() {
  const std::lock_guard lock(fMutex);
  return std::exchange(fFailed, {});
}

void HostTap::FailLookUp(unsigned long n, bool andLater) {
  const std::lock_guard lock(fMutex);
  fLookUp = 1;
  fFailingLookUp = n;
  fDoLaterFail = andLater;
}

bool HostTap::StopLookUpFaults() {
  const std::lock_guard lock(fMutex);
  const unsigned long failing = std::exchange(fFailingLookUp, 0);
  return failing != 0 && fLookUp > failing;
}

bool HostTap::FailsLookUp(const char* interfaceName, const char* methodName) {
  const std::lock_guard lock(fMutex);
  if (fFailingLookUp == 0) return false;
  const unsigned long number = fLookUp++;
  if (number < fFailingLookUp || (number > fFailingLookUp && !fDoLaterFail)) return false;
  if (fFailed.empty()) {
    fFailed = std::string(interfaceName ? interfaceName : "(null)") + ", " +
              (methodName ? methodName : "(null)");
  }
  return true;
}

void HostTap::MoveProcedures() {
  KAPHostInterfaceSet::ForEach([&]<class Interface>() {
    if constexpr (!std::is_same_v<Interface, KAPBinderInterface>) {
      fHost.Unregister(Interface::kName);
      ForEachSlot<Interface>([&]<std::size_t kSlot, class Proc>() {
        TTap<Interface, kSlot, true, Proc>::Install(
            fHost, reinterpret_cast<void*>(TTap<Interface, kSlot, false, Proc>::fProc));
      });
    }
  });
  fIsMoved = true;
}

std::vector<std::string> HostTap::TakeMisplaced() {
  const std::lock_guard lock(fMutex);
  return std::exchange(fMisplaced, {});
}

void HostTap::Misplaced(const char* interfaceName, const char* methodName) {
  std::string call = std::string(interfaceName) + ", " + methodName;
  if (fOnMisplaced) fOnMisplaced(call);
  const std::lock_guard lock(fMutex);
  fMisplaced.push_back(std::move(call));
}

}  // namespace KAPCheck
