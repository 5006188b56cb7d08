// SPDX-License-Identifier: MIT
#include "checks/Checker.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "accounting/Resources.h"
#include "checks/ThreadTagRows.h"
#include "errors/Errors.h"
#include "quarantine/Quarantine.h"
#include "sites/ThreadState.h"
#include "sites/Values.h"

namespace KAPHost {

namespace {

// What a result place holds before the call. Not a likely result.
constexpr unsigned char kUnset = 0xE5;

const char* Verb(const ObservedCall& call) {
  if (std::string_view(call.fMethod.fMethod) == "AddRef") return "AddRef";
  return call.fMethod.fReleases ? "release" : "use";
}

static_assert(std::is_sorted(std::begin(kThreadTagRows), std::end(kThreadTagRows)));

// kAny for a method that has no row: interfaces that other components declare.
ThreadTag ThreadTagOf(const char* interfaceName, const char* methodName) noexcept {
  const ThreadTagRow wanted{interfaceName, methodName, ThreadTag::kAny};
  const auto* const end = std::end(kThreadTagRows);
  const auto* const row = std::lower_bound(std::begin(kThreadTagRows), end, wanted);
  return row != end && !(wanted < *row) ? row->fTag : ThreadTag::kAny;
}

// Any value of few bytes may be a result.
bool IsFilled(const WatchedValue& place) { return place.fSize >= 4; }

bool IsUnset(const WatchedValue& place) {
  const auto* const bytes = place.As<const unsigned char*>();
  return IsFilled(place) &&
         std::all_of(bytes, bytes + place.fSize, [](auto byte) { return byte == kUnset; });
}

// Whether a thread tag is about a value of the kind. Atoms and errors never change.
bool IsObject(ValueKind kind) {
  switch (kind) {
    case ValueKind::kContainer:
    case ValueKind::kBuffer:
    case ValueKind::kPointer:
      return true;
    case ValueKind::kNothing:
    case ValueKind::kBool:
    case ValueKind::kSigned:
    case ValueKind::kUnsigned:
    case ValueKind::kReal:
    case ValueKind::kText:
    case ValueKind::kAtom:
    case ValueKind::kError:
    case ValueKind::kPlace:
    case ValueKind::kOther:
      return false;
  }
  return false;
}

// The object that a thread tag is about: the first that the call gets.
const void* ObjectOf(const ObservedCall& call) {
  for (const WatchedValue& value : call.fArguments) {
    if (IsObject(value.fKind)) return value.As<const void*>();
  }
  return nullptr;
}

std::string Article(const std::string& name) {
  return (std::string_view("aeiou").find(name[0]) != std::string_view::npos ? "an " : "a ") + name;
}

std::string SingularOf(KAPResource resource) { return Article(TextOf(resource).fNoun); }

}  // namespace

void Checker::CheckHandle(const ObservedCall& call, const WatchedValue& value, Findings& findings,
                          bool& refused) const {
  const KAPResource wanted = ResourceOf(value.fKind);
  const void* const handle = value.As<const void*>();
  if (wanted == KAPResource::kNothing || !handle) return;
  const bool isCore = wanted == KAPResource::kError && IsCoreError(*value.As<const KAPError*>());
  if (isCore) return;
  const auto [state, resource] = fLedger.Find(handle);
  if (state == Ledger::State::kUnknown) {
    if (AcceptsUnknown(wanted)) return;
    findings.push_back({"what was passed as " + SingularOf(wanted) + " is not one"});
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

void Checker::CheckThread(const ObservedCall& call, Findings& findings, const void*& object) {
  // Streams and the like are registered under names of their own.
  switch (ThreadTagOf(call.fMethod.fInterface, call.fMethod.fMethod)) {
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
void Checker::BeginUse(const ObservedCall& call, bool isExclusive, Findings& findings,
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

Checker::Findings Checker::Begin(const ObservedCall& call, bool& refused, const void*& object) {
  Findings findings;
  tReportedDead = nullptr;
  for (const WatchedValue& value : call.fArguments) CheckHandle(call, value, findings, refused);
  if (!refused) CheckThread(call, findings, object);
  if (const WatchedValue* const place = call.Place(); place && (refused || IsFilled(*place))) {
    std::memset(place->As<void*>(), refused ? 0 : kUnset, place->fSize);
  }
  return findings;
}

void Checker::CheckPlace(const WatchedValue& place, const WatchedValue& result,
                         Findings& findings) const {
  const bool isError = result.fBits != 0;
  if (IsUnset(place)) {
    findings.push_back({isError ? "a procedure returned an error and left its result place unset"
                                : "a procedure left its result place unset"});
    std::memset(place.As<void*>(), 0, place.fSize);
  } else if (isError && ValueAt(place).fBits != 0) {
    findings.push_back({"a procedure returned both a result and an error"});
  } else if (!isError) {
    CheckResult(ValueAt(place), findings);
  }
}

bool Checker::IsUsable(const WatchedValue& value) const {
  const KAPResource wanted = ResourceOf(value.fKind);
  const void* const handle = value.As<const void*>();
  if (wanted == KAPResource::kNothing || !handle) return true;
  if (wanted == KAPResource::kError && IsCoreError(*value.As<const KAPError*>())) return true;
  const auto [state, resource] = fLedger.Find(handle);
  return state == Ledger::State::kUnknown ? AcceptsUnknown(wanted)
                                          : state == Ledger::State::kAlive && resource == wanted;
}

// A handle of the host itself is new to the ledger.
void Checker::CheckResult(const WatchedValue& result, Findings& findings) const {
  if (IsUsable(result)) return;
  const void* const handle = result.As<const void*>();
  const std::string wanted = SingularOf(ResourceOf(result.fKind));
  const auto [state, resource] = fLedger.Find(handle);
  if (state == Ledger::State::kUnknown) {
    findings.push_back({"what a procedure returned as " + wanted + " is not one"});
  } else if (state == Ledger::State::kDead) {
    findings.push_back({"a procedure returned a dead " + fLedger.NameOf(handle), handle});
  } else {
    findings.push_back(
        {"a procedure returned " + Article(fLedger.NameOf(handle)) + " as " + wanted, handle});
  }
}

Checker::Findings Checker::End(const ObservedCall& call, const WatchedValue* result) const {
  Findings findings;
  tReportedDead = nullptr;
  if (!result) {
    if (!call.fMethod.fThrows) findings.push_back({"an exception left a procedure"});
    return findings;
  }
  const WatchedValue* const place = call.Place();
  const bool mayPlace = place && result->fKind == ValueKind::kError;
  if (call.fIsHosts) {
    if (mayPlace && IsUnset(*place)) CheckPlace(*place, *result, findings);
    return findings;
  }
  CheckResult(*result, findings);
  if (mayPlace) CheckPlace(*place, *result, findings);
  return findings;
}

void Checker::EndUse(const void* object) noexcept {
  const std::lock_guard lock(fMutex);
  const auto uses = fUses.find(object);
  const auto mine = std::find_if(uses->second.rbegin(), uses->second.rend(),
                                 [](const Use& use) { return use.fThread == ThreadNumber(); });
  uses->second.erase(std::next(mine).base());
  if (uses->second.empty()) fUses.erase(uses);
}

void Checker::ForgetBinding(const char* component) {
  const std::lock_guard lock(fMutex);
  fBindingThreads.erase(component);
}

}  // namespace KAPHost
