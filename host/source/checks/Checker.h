// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "checks/Ledger.h"
#include "checks/ObservedCall.h"

namespace KAPHost {

// The misuse that shows in the arguments, the threads and the results of calls. Thread-safe.
class Checker {
 public:
  explicit Checker(const Ledger& ledger) : fLedger(ledger) {}

  // Handles of this kind that the ledger does not know may be those of a former host. Not to be
  // called while calls are checked.
  void AcceptUnknown(KAPResource resource) { fAccepted.insert(resource); }
  bool AcceptsUnknown(KAPResource resource) const { return fAccepted.contains(resource); }

  struct Finding {
    std::string fHeadline;
    const void* fThing = nullptr;
    std::string fOther = {};  // lines about another call
  };
  using Findings = std::vector<Finding>;

  // Before the call. Sets `refused` when the host must not look at an argument, which is not the
  // handle that the procedure takes, and `object` when the use of an object ends with the call.
  // Fills the result place, or clears it when the call is refused.
  Findings Begin(const ObservedCall& call, bool& refused, const void*& object);
  // After a call that was not refused. `result` is null when it threw.
  Findings End(const ObservedCall& call, const WatchedValue* result) const;
  // However the call has ended.
  void EndUse(const void* object) noexcept;

  // The next thread that makes a call for binding threads is the component's new one.
  void ForgetBinding(const char* component);

  // Whether a handle may be looked at: it is alive, and of the kind that the value has.
  bool IsUsable(const WatchedValue& value) const;

 private:
  struct Use {
    unsigned fThread;
    bool fIsExclusive;
    Site fSite;
  };

  void CheckHandle(const ObservedCall& call, const WatchedValue& value, Findings& findings,
                   bool& refused) const;
  void CheckThread(const ObservedCall& call, Findings& findings, const void*& object);
  void BeginUse(const ObservedCall& call, bool isExclusive, Findings& findings,
                const void*& object);
  void CheckResult(const WatchedValue& result, Findings& findings) const;
  void CheckPlace(const WatchedValue& place, const WatchedValue& result, Findings& findings) const;

  const Ledger& fLedger;
  std::set<KAPResource> fAccepted;
  std::mutex fMutex;
  std::unordered_map<const void*, std::vector<Use>> fUses;
  std::map<std::string, Site> fBindingThreads;  // by component
};

}  // namespace KAPHost
