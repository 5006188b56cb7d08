// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "kaphost/KAPHost.h"

namespace KAPCheck {

// The names of a procedure in the binder.
struct ProcNames {
  std::string fInterface, fMethod, fProc;
  friend bool operator==(const ProcNames&, const ProcNames&) = default;
  friend auto operator<=>(const ProcNames&, const ProcNames&) = default;
};

// Stands between the host and a component: every look-up and every call of the host's interfaces
// goes through it. One at a time. Calls come from any thread; the members from one thread.
class HostTap {
 public:
  explicit HostTap(KAPHost::Host& host);
  HostTap(const HostTap&) = delete;
  HostTap& operator=(const HostTap&) = delete;
  ~HostTap();

  // The callback for components.
  KAPGetProcAddressProc GetProcAddress() const;

  // What components have registered so far, also what they have removed again.
  std::set<ProcNames> Registrations() const;
  // The first call or look-up that failed by fault injection since the rule was set, as "interface,
  // method"; "" when there is none or when it was a method of a stream, which does not go through
  // the tap.
  std::string TakeFailed();

  // The nth look-up from now on returns null, alone or with all later ones.
  void FailLookUp(unsigned long n, bool andLater);
  // Ends that. Returns whether a look-up has failed.
  bool StopLookUpFaults();

  // Unregisters all interfaces of the host but the binder's own, and registers them again with
  // procedures at other addresses. Only once.
  void MoveProcedures();
  // Calls of procedures from before MoveProcedures, and all calls and look-ups after Forbid, as
  // "interface, method"; each of them is forwarded all the same.
  std::vector<std::string> TakeMisplaced();
  void Forbid() { fIsForbidden = true; }
  void Allow() { fIsForbidden = false; }
  // Called with each misplaced call from now on, on its thread.
  void OnMisplaced(void (*proc)(const std::string& call)) { fOnMisplaced = proc; }

 private:
  friend struct TapNotes;

  bool FailsLookUp(const char* interfaceName, const char* methodName);
  void Misplaced(const char* interfaceName, const char* methodName);

  KAPHost::Host& fHost;
  KAPGetProcAddressProc fGetProc;
  mutable std::mutex fMutex;
  std::set<ProcNames> fRegistrations;
  std::string fFailed;
  unsigned long fLookUp = 0;         // the number of the next look-up
  unsigned long fFailingLookUp = 0;  // 0 for none
  bool fDoLaterFail = false;
  std::vector<std::string> fMisplaced;
  std::atomic<bool> fIsMoved = false;
  std::atomic<bool> fIsForbidden = false;
  void (*fOnMisplaced)(const std::string&) = nullptr;
};

}  // namespace KAPCheck
