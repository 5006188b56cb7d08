// SPDX-License-Identifier: MIT
#include "checks/References.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "errors/Errors.h"
#include "sites/Values.h"

namespace KAPHost {

namespace {

using namespace std::string_view_literals;

bool IsDead(const Ledger& ledger, const void* handle) {
  return ledger.Find(handle).fState == Ledger::State::kDead;
}

void Take(Ledger& ledger, const ObservedCall& call, const WatchedValue& value) {
  const KAPResource resource = ResourceOf(value.fKind);
  const void* const handle = value.As<const void*>();
  if (resource == KAPResource::kNothing || !handle) return;
  if (resource == KAPResource::kError && IsCoreError(*value.As<KAPError*>())) return;
  if (call.fIsHosts) {
    ledger.Take(resource, handle, call.fCaller);
    ledger.ReleaseIfHeld(handle, kHost);
    return;
  }
  // A component that returns what is dead or of another kind transfers no reference. It has all
  // handles from the host, so one that is not known is of a former host or none at all.
  const auto [state, actual] = ledger.Find(handle);
  if (state != Ledger::State::kAlive || actual != resource) return;
  ledger.Take(resource, handle, call.fCaller);
  ledger.Release(handle, call.fCallee);
}

}  // namespace

const void* CountReleases(Ledger& ledger, const ObservedCall& call) {
  constexpr std::array kReleases = {"Release"sv, "DeleteStringAtom"sv, "DecrementWithoutDelete"sv};
  if (!call.fIsHosts || call.fArguments.empty()) return nullptr;
  const WatchedValue& first = call.fArguments[0];
  if (ResourceOf(first.fKind) == KAPResource::kNothing) return nullptr;
  if (std::find(kReleases.begin(), kReleases.end(), call.fMethod.fMethod) == kReleases.end()) {
    return nullptr;
  }
  const void* const handle = first.As<const void*>();
  return ledger.Release(handle, call.fCaller) ? nullptr : handle;
}

void CountResults(Ledger& ledger, const ObservedCall& call, const WatchedValue& result,
                  bool isRefused) {
  Take(ledger, call, result);
  if (isRefused) return;
  if (call.Place() && result.fBits == 0) Take(ledger, call, ValueAt(*call.Place()));
  const bool isFalse = result.fKind == ValueKind::kBool && result.fBits == 0;
  if (!call.fIsHosts || call.fArguments.empty() || isFalse) return;
  const WatchedValue& first = call.fArguments[0];
  if (call.fMethod.fMethod != "AddRef"sv || IsDead(ledger, first.As<const void*>())) return;
  Take(ledger, call, first);
}

}  // namespace KAPHost
