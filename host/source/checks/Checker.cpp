// SPDX-License-Identifier: MIT
#include "checks/Checker.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "accounting/Resources.h"
#include "quarantine/Quarantine.h"
#include "checks/ThreadTags.h"
#include "errors/Errors.h"
#include "sites/ThreadState.h"
#include "sites/Values.h"

namespace KAPHost {

namespace {

// What a result place holds before the call. Not a likely result.
constexpr unsigned char kUnset = 0xE5;

const char* Verb(const CheckedCall& call) {
  if (std::string_view(call.fMethod) == "AddRef") return "AddRef";
  return call.fTraits.fNoOpUnbound ? "release" : "use";
}

bool IsPlace(const CheckedCall& call) {
  return !call.fArguments.empty() && call.fArguments[0].fKind == ValueKind::kPlace &&
         call.fArguments[0].fBits != 0;
}

bool IsUnset(const WatchedValue& place) {
  const auto* const bytes = place.As<const unsigned char*>();
  return std::all_of(bytes, bytes + place.fSize, [](auto byte) { return byte == kUnset; });
}

// The object that a thread tag is about: the first that the call gets.
const void* ObjectOf(const CheckedCall& call) {
  for (const WatchedValue& value : call.fArguments) {
    const bool isObject = value.fKind == ValueKind::kContainer ||
                          value.fKind == ValueKind::kBuffer || value.fKind == ValueKind::kPointer;
    if (isObject) return value.As<const void*>();
  }
  return nullptr;
}

std::string Article(const std::string& name) {
  return (std::string_view("aeiou").find(name[0]) != std::string_view::npos ? "an " : "a ") + name;
}

const char* SingularOf(KAPResource resource) {
  switch (resource) {
    case KAPResource::kAtom:
      return "an atom";
    case KAPResource::kError:
      return "an error";
    case KAPResource::kContainer:
      return "a container";
    default:
      return "a buffer";
  }
}

}  // namespace

void Checker::CheckHandle(const CheckedCall& call, const WatchedValue& value, Findings& findings,
                          bool& refused) const {
  const KAPResource wanted = ResourceOf(value.fKind);
  const void* const handle = value.As<const void*>();
  if (wanted == KAPResource::kNothing || !handle) return;
  const bool isCore = wanted == KAPResource::kError && IsCoreError(*value.As<const KAPError*>());
  if (isCore) return;
  const auto [state, resource] = fLedger.Find(handle);
  if (state == Ledger::State::kUnknown) {
    if (AcceptsUnknown(wanted)) return;
    findings.push_back({std::string("what was passed as ") + SingularOf(wanted) + " is not one"});
    refused = call.fIsHosts;
  } else if (resource != wanted) {
    findings.push_back(
        {Article(fLedger.NameOf(handle)) + " was passed as " + SingularOf(wanted), handle});
    refused = call.fIsHosts;
  } else if (state == Ledger::State::kDead) {
    findings.push_back({std::string(Verb(call)) + " of a dead " + fLedger.NameOf(handle), handle});
    tReportedDead = handle;
  }
}

void Checker::CheckThread(const CheckedCall& call, Findings& findings, const void*& object) {
  switch (ThreadTagOf(call.fInterface, call.fMethod)) {
    case ThreadTag::kAny:
      break;
    case ThreadTag::kSharedRead:
      BeginUse(call, false, findings, object);
      break;
    case ThreadTag::kExclusive:
      BeginUse(call, true, findings, object);
      break;
    case ThreadTag::kBinding: {
      const Site here = fLedger.Here();
      const std::lock_guard lock(fMutex);
      const auto [first, isNew] = fBindingThreads.try_emplace(call.fCaller, here);
      if (isNew || first->second.fThread == here.fThread) break;
      findings.push_back({"a call that only the binding thread may make came from another one",
                          nullptr, DescribeSite("bound", first->second)});
    }
  }
}

// An object may be used in calls inside of each other on one thread.
void Checker::BeginUse(const CheckedCall& call, bool isExclusive, Findings& findings,
                       const void*& object) {
  const void* const used = ObjectOf(call);
  if (!used) return;
  Use use{ThreadNumber(), isExclusive, fLedger.Here()};
  Site other;
  {
    const std::lock_guard lock(fMutex);
    std::vector<Use>& uses = fUses[used];
    for (const Use& one : uses) {
      if (one.fThread != use.fThread && (one.fIsExclusive || isExclusive)) other = one.fSite;
    }
    uses.push_back(std::move(use));
    object = used;
  }
  if (!other.fCaller) return;
  findings.push_back({"two threads use " + fLedger.NameOf(object) +
                          " at the same time, which one of the calls forbids",
                      object, DescribeSite("also used", other)});
}

Checker::Findings Checker::Begin(const CheckedCall& call, bool& refused, const void*& object) {
  Findings findings;
  tReportedDead = nullptr;
  for (const WatchedValue& value : call.fArguments) CheckHandle(call, value, findings, refused);
  CheckThread(call, findings, object);
  if (IsPlace(call)) std::memset(call.fArguments[0].As<void*>(), kUnset, call.fArguments[0].fSize);
  return findings;
}

void Checker::CheckPlace(const CheckedCall& call, const WatchedValue& result, Findings& findings) {
  const WatchedValue& place = call.fArguments[0];
  const bool isError = result.fBits != 0;
  if (IsUnset(place)) {
    findings.push_back({isError ? "a procedure returned an error and left its result place unset"
                                : "a procedure left its result place unset"});
    std::memset(place.As<void*>(), 0, place.fSize);
  } else if (isError && ValueAt(place).fBits != 0) {
    findings.push_back({"a procedure returned both a result and an error"});
  }
}

void Checker::CheckResult(const WatchedValue& result, Findings& findings) const {
  if (ResourceOf(result.fKind) == KAPResource::kNothing || result.fBits == 0) return;
  const void* const handle = result.As<const void*>();
  if (fLedger.Find(handle).fState != Ledger::State::kDead) return;
  findings.push_back({"a procedure returned a dead " + fLedger.NameOf(handle), handle});
}

Checker::Findings Checker::End(const CheckedCall& call, const WatchedValue* result,
                               const void* object) {
  Findings findings;
  tReportedDead = nullptr;
  if (object) {
    const std::lock_guard lock(fMutex);
    const auto uses = fUses.find(object);
    const auto mine = std::find_if(uses->second.begin(), uses->second.end(),
                                   [](const Use& use) { return use.fThread == ThreadNumber(); });
    uses->second.erase(mine);
    if (uses->second.empty()) fUses.erase(uses);
  }
  if (!result) {
    if (!call.fTraits.fThrows) findings.push_back({"an exception left a procedure"});
    return findings;
  }
  CheckResult(*result, findings);
  if (IsPlace(call) && result->fKind == ValueKind::kError) CheckPlace(call, *result, findings);
  return findings;
}

}  // namespace KAPHost
