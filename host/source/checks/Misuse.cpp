// SPDX-License-Identifier: MIT
#include "checks/Misuse.h"

#include <new>

#include "base/Current.h"
#include "base/Reports.h"
#include "checks/Ledger.h"
#include "quarantine/Quarantine.h"

namespace KAPHost {

namespace {

template <class Act>
void WithLedger(Act act) noexcept {
  Ledger* const ledger = Current<Ledger>();
  if (!ledger) return;
  try {
    act(*ledger);
  } catch (const std::bad_alloc&) {
    // The ledger lacks the thing, and the list of what is held as well.
  }
}

}  // namespace

bool HasMisuseChecks() noexcept { return HasGateBits(kGateChecking); }

void ReportMisuse(const std::string& headline, const void* thing) noexcept {
  const HandleObserver* const observer = Current<HandleObserver>();
  if (!observer || !HasMisuseChecks()) return;
  try {
    observer->Report(headline, thing);
  } catch (const std::bad_alloc&) {
    Report("KAP host: misuse of memory; no memory to describe it");
  }
}

void NoteThing(KAPResource resource, const void* thing, const std::string& what) noexcept {
  WithLedger([&](Ledger& ledger) {
    const char* const caller = CurrentSite(false).fCaller;
    ledger.Take(resource, thing, caller ? caller : kHost, what);
  });
}

void EndThing(const void* thing, const std::string& what) noexcept {
  WithLedger([&](Ledger& ledger) { ledger.End(thing, what, ledger.Here().fStack); });
}

void ForgetThing(const void* thing) noexcept {
  WithLedger([&](Ledger& ledger) { ledger.Forget(thing); });
}

bool IsDeadThing(const void* thing) noexcept {
  bool isDead = false;
  WithLedger(
      [&](const Ledger& ledger) { isDead = ledger.Find(thing).fState == Ledger::State::kDead; });
  return isDead;
}

}  // namespace KAPHost
