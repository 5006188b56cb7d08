// SPDX-License-Identifier: MIT
#include "host/HostState.h"

#include <atomic>
#include <iostream>
#include <stdexcept>
#include <utility>

#include "accounting/Accounting.h"
#include "atoms/AtomCredits.h"
#include "atoms/AtomTable.h"
#include "base/Current.h"
#include "base/Sanitizers.h"
#include "binder/Registration.h"
#include "containers/ContainerTypes.h"
#include "faults/Gate.h"
#include "heap/Heap.h"
#include "host/Forks.h"
#include "kap/KAPHostInterfaces.h"

namespace KAPHost {

namespace {

constinit std::atomic<bool> gClaimed{false};

bool TakesPages(HostMemory memory) {
  return memory == HostMemory::kAutomatic ? !kIsSanitized : memory == HostMemory::kPages;
}

template <KAPResource kResource>
void AddAll(Snapshot& snapshot) {
  if constexpr (TextOf(kResource).fIsNamed) {
    AddNamed<kResource>(snapshot);
  } else {
    snapshot.Add(kResource, "", TotalOf(SlotOf(kResource)));
  }
}

Snapshot CountAll() {
  Snapshot snapshot;
  [&]<std::size_t... kValues>(std::index_sequence<kValues...>) {
    (AddAll<static_cast<KAPResource>(kValues)>(snapshot), ...);
  }
  (std::make_index_sequence<kResources>());
  return snapshot;
}

void SetCurrent(HostState* state) noexcept {
  gCurrent<FaultRules> = state ? &state->fFaultRules : nullptr;
  gCurrent<Binder> = state ? &state->fBinder : nullptr;
  gCurrent<Reports> = state ? &state->fReports : nullptr;
  gCurrent<StreamLog> = state ? &state->fStreamLog : nullptr;
  gCurrent<Quarantine> = state ? &state->fQuarantine : nullptr;
  gCurrent<ClientPurges> = state ? &state->fClientPurges : nullptr;
}

}  // namespace

HostState::Claim::Claim() {
  if (gClaimed.exchange(true)) {
    throw std::logic_error(
        "KAPHost::Host: another host lives in this process; there can be one at a time");
  }
  gAtoms.Start();
  SurviveForks();
}

HostState::Claim::~Claim() { gClaimed = false; }

HostState::HostState(HostOptions options)
    : fReports(std::move(options.fOnReport)),
      fOnLeak(std::move(options.fOnLeak)),
      fBefore(CountAll()) {
  KAP_T_MT::KAPHostInterfaceSet::ForEach(
      [&]<class Interface>() { RegisterService<Interface>(fBinder); });
  SetCurrent(this);
  const bool takesPages = TakesPages(options.fMemory);
  UsePages(takesPages);
  gGate.store((options.fChecks ? unsigned{kGateChecking} : 0) |
              (takesPages ? 0 : unsigned{kGatePlain}));
}

HostState::~HostState() {
  AtomCredits::ReleaseAll();
  gContainerTypes.ReleaseUnused();
  ReportLeaks();
  gGate.store(kGateClosed);
  AtomCredits::ReleaseAll();  // of the call about leaks; a closed gate lets no atom in
  SetCurrent(nullptr);
}

Snapshot HostState::TakeSnapshot() const { return CountAll() - fBefore; }

void HostState::ReportLeaks() const noexcept {
  try {
    const Snapshot leaked = TakeSnapshot();
    if (leaked.IsEmpty()) return;
    if (fOnLeak) {
      fOnLeak(leaked);
    } else {
      std::cerr << "KAP host: still held at shutdown:\n" << leaked;
    }
  } catch (const std::exception&) {
    std::cerr << "KAP host: no memory for the leak report at shutdown\n";
  }
}

}  // namespace KAPHost
