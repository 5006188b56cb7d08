// SPDX-License-Identifier: MIT
#include "host/HostState.h"

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <utility>

#include "accounting/Accounting.h"
#include "atoms/AtomCredits.h"
#include "atoms/AtomTable.h"
#include "base/Current.h"
#include "base/Sanitizers.h"
#include "binder/Registration.h"
#include "checks/GuardedMemory.h"
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
  gCurrent<Watcher> = state ? state->fWatcher.get() : nullptr;
  gCurrent<HandleObserver> = state && state->TheLedger() ? state->fWatcher.get() : nullptr;
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

std::unique_ptr<Watcher> HostState::MakeWatcher(HostOptions& options) {
  DebugOptions& debug = options.fDebug;
  const std::string trace = debug.fTrace;
  const bool checks = options.fChecks;
  try {
    if (const char* words = ::secure_getenv("KAPHOST_DEBUG")) {
      ParseDebugWords(words, debug, options.fChecks);
    }
  } catch (const std::invalid_argument& error) {
    std::cerr << "KAP host: " << error.what();
  }
  const bool watches =
      options.fChecks || debug.fStacks || !debug.fTrace.empty() || !debug.fLeaks.empty();
  if (!watches) return nullptr;
  // A program that has not asked for checks may never look at the reports.
  const bool complains = options.fChecks && !checks;
  try {
    return std::make_unique<Watcher>(debug, options.fChecks, complains);
  } catch (const std::runtime_error& error) {
    if (debug.fTrace == trace) throw;
    std::cerr << "KAP host: " << error.what() << '\n';  // the user's, not the program's
    debug.fTrace.clear();
    return std::make_unique<Watcher>(debug, options.fChecks, complains);
  }
}

void HostState::RegisterServices() {
  const auto wrapAs = [this](bool isHosts) {
    return [this, isHosts](const char* interfaceName, const char* methodName, const char* procName,
                           void* proc) {
      return fWatcher->Watch(interfaceName, methodName, procName, proc, isHosts);
    };
  };
  if (fWatcher) fBinder.SetWrap(wrapAs(true));
  KAP_T_MT::KAPHostInterfaceSet::ForEach(
      [&]<class Interface>() { RegisterService<Interface>(fBinder); });
  if (!fWatcher) return;
  if (fWatcher->HasLedger()) RegisterGuardedMemory(fBinder);
  fBinder.SetWrap(wrapAs(false));
}

HostState::HostState(HostOptions options)
    : fWatcher(MakeWatcher(options)),
      fReports(std::move(options.fOnReport)),
      fOnLeak(std::move(options.fOnLeak)),
      fLeaks(std::move(options.fDebug.fLeaks)),
      fBefore(CountAll()) {
  RegisterServices();
  if (fWatcher) fWatcher->AcceptUnknown(fBefore);
  SetCurrent(this);
  const bool takesPages = TakesPages(options.fMemory);
  UsePages(takesPages);
  gGate.store((options.fChecks ? unsigned{kGateChecking} : 0) |
              (takesPages ? 0 : unsigned{kGatePlain}) |
              (TheLedger() ? unsigned{kGateFollowing} : 0));
}

HostState::~HostState() {
  AtomCredits::ReleaseAll();
  gContainerTypes.ReleaseUnused();
  if (fWatcher && fWatcher->HasLedger()) EndGuardedMemory();
  ReportLeaks();
  gGate.store(kGateClosed);
  AtomCredits::ReleaseAll();  // of the call about leaks; a closed gate lets no atom in
  SetCurrent(nullptr);
}

Snapshot HostState::TakeSnapshot() const { return CountAll() - fBefore; }

// A list without a line says that nothing is held.
void HostState::ListLeaks() const {
  std::ofstream file;
  if (fLeaks != "-") {
    file.open(fLeaks);
    if (!file) std::cerr << "KAP host: cannot write \"" << fLeaks << "\"\n";
  }
  std::ostream& out = fLeaks == "-" ? std::cerr : file;
  for (const LiveThing& thing : TheLedger()->Live(0)) out << thing;
}

void HostState::ReportLeaks() const noexcept {
  try {
    if (!fLeaks.empty()) ListLeaks();
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
