// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "checks/Ledger.h"
#include "kaphost/Declared.h"

namespace KAPHost {

// What the checks know of a call.
struct CheckedCall {
  const char* fInterface;
  const char* fMethod;
  KAP_T_MT::KAPTraits fTraits;
  const char* fCaller;
  bool fIsHosts;  // the procedure is the host's own
  std::span<const WatchedValue> fArguments;
};

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
  Findings Begin(const CheckedCall& call, bool& refused, const void*& object);
  // After it. `result` is null when the call threw.
  Findings End(const CheckedCall& call, const WatchedValue* result, const void* object);

 private:
  struct Use {
    unsigned fThread;
    bool fIsExclusive;
    Site fSite;
  };

  void CheckHandle(const CheckedCall& call, const WatchedValue& value, Findings& findings,
                   bool& refused) const;
  void CheckThread(const CheckedCall& call, Findings& findings, const void*& object);
  void BeginUse(const CheckedCall& call, bool isExclusive, Findings& findings, const void*& object);
  void CheckResult(const WatchedValue& result, Findings& findings) const;
  static void CheckPlace(const CheckedCall& call, const WatchedValue& result, Findings& findings);

  const Ledger& fLedger;
  std::set<KAPResource> fAccepted;
  std::mutex fMutex;
  std::unordered_map<const void*, std::vector<Use>> fUses;
  std::map<std::string, Site> fBindingThreads;  // by component
};

// The kind of counted things that a handle refers to; kNothing for other values.
constexpr KAPResource ResourceOf(ValueKind kind) noexcept {
  switch (kind) {
    case ValueKind::kAtom:
      return KAPResource::kAtom;
    case ValueKind::kError:
      return KAPResource::kError;
    case ValueKind::kContainer:
      return KAPResource::kContainer;
    case ValueKind::kBuffer:
      return KAPResource::kBuffer;
    default:
      return KAPResource::kNothing;
  }
}

}  // namespace KAPHost
