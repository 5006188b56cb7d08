// SPDX-License-Identifier: MIT
#include "host/HostState.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string_view>
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

// While the host knows who holds what, each block is one of malloc: `free` of one of them is found,
// and a write outside of one does not reach its neighbour.
bool TakesPages(HostMemory memory, bool hasLedger) {
  return memory == HostMemory::kAutomatic ? !kIsSanitized && !hasLedger
                                          : memory == HostMemory::kPages;
}

template <KAPResource kResource>
void AddOne(HoldingSum& sum) {
  if constexpr (TextOf(kResource).fIsNamed) {
    AddNamed<kResource>(sum);
  } else {
    sum.Add(kResource, "", TotalOf(SlotOf(kResource)));
  }
}

void AddAll(HoldingSum& sum) {
  [&]<std::size_t... kValues>(std::index_sequence<kValues...>) {
    (AddOne<static_cast<KAPResource>(kValues)>(sum), ...);
  }
  (std::make_index_sequence<kResources>());
}

Snapshot CountAll() {
  struct SnapshotSum final : HoldingSum {
    void Add(KAPResource resource, std::string_view name, Holding holding) override {
      fSnapshot.Add(resource, name, holding);
    }
    Snapshot fSnapshot;
  } sum;
  AddAll(sum);
  return std::move(sum.fSnapshot);
}

// Each number counts with an odd factor that depends on what it is of.
class DigestSum final : public HoldingSum {
 public:
  void Add(KAPResource resource, std::string_view name, Holding holding) override {
    const std::uint64_t key = std::hash<std::string_view>()(name) + static_cast<unsigned>(resource);
    fDigest += static_cast<std::uint64_t>(holding.fNumber) * Factor(key) +
               static_cast<std::uint64_t>(holding.fExtent) * Factor(~key);
  }
  std::uint64_t Get() const { return fDigest; }

 private:
  static std::uint64_t Factor(std::uint64_t key) {
    key = (key ^ key >> 32) * 0x9E3779B97F4A7C15;
    return (key ^ key >> 29) * 0xBF58476D1CE4E5B9 | 1;
  }

  std::uint64_t fDigest = 0;
};

std::uint64_t DigestOfAll() {
  DigestSum sum;
  AddAll(sum);
  return sum.Get();
}

void SetCurrent(HostState* state) noexcept {
  gCurrent<FaultRules> = state ? &state->fFaultRules : nullptr;
  gCurrent<Binder> = state ? &state->fBinder : nullptr;
  gCurrent<Reports> = state ? &state->fReports : nullptr;
  gCurrent<StreamLog> = state ? &state->fStreamLog : nullptr;
  gCurrent<Quarantine> = state ? &state->fQuarantine : nullptr;
  gCurrent<Watcher> = state ? state->fWatcher : nullptr;
  gCurrent<Ledger> = state ? state->TheLedger() : nullptr;
  gCurrent<HandleObserver> = state && state->TheLedger() ? state->fWatcher : nullptr;
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

bool HostState::AddEnvironment(HostOptions& options) {
  const bool checks = options.fChecks;
  try {
    if (const char* words = ::secure_getenv("KAPHOST_DEBUG")) {
      ParseDebugWords(words, options.fDebug, options.fChecks);
    }
  } catch (const std::invalid_argument& error) {
    std::cerr << "KAP host: " << error.what();
  }
  return options.fChecks && !checks;
}

// A path that the environment has set does not keep the program from working: without that file,
// the program's own is written.
template <class Open>
void HostState::OpenOutput(std::string& path, const std::string& ofProgram, Open open) {
  try {
    if (!path.empty()) open();
  } catch (const std::runtime_error& error) {
    if (path == ofProgram) throw;
    std::cerr << "KAP host: " << error.what() << '\n';
    path = ofProgram;
    if (!path.empty()) open();
  }
}

HostState::Observing HostState::StartObserving(HostOptions& options) {
  DebugOptions& debug = options.fDebug;
  const std::string trace = debug.fTrace;
  const std::string leaks = debug.fLeaks;
  // A program that has not asked for checks may never look at the reports.
  const bool alsoToStandardError = AddEnvironment(options);
  Observing observing;
  OpenOutput(debug.fLeaks, leaks,
             [&] { observing.fLeaks = std::make_unique<OutputFile>(debug.fLeaks, debug.fOnLost); });
  std::unique_ptr<TraceWriter> writer;
  OpenOutput(debug.fTrace, trace, [&] { writer = TraceWriter::Open(debug.fTrace, debug.fOnLost); });
  if (options.fChecks || debug.fStacks || writer || observing.fLeaks) {
    observing.fWatcher =
        std::make_unique<Watcher>(debug, std::move(writer), options.fChecks, alsoToStandardError);
  }
  return observing;
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
  const std::size_t guarded = GuardedBlocks();
  if (TheLedger() || guarded != 0) {
    const long held = fBefore.Total(KAPResource::kBlock).fNumber;
    RegisterGuardedMemory(fBinder, held > static_cast<long>(guarded));
  }
  if (!fWatcher) return;
  fBinder.SetWrap(wrapAs(false));
}

HostState::HostState(HostOptions options)
    : fObserving(StartObserving(options)),
      fWatcher(fObserving.fWatcher.get()),
      fReports(std::move(options.fOnReport)),
      fOnLeak(std::move(options.fOnLeak)),
      fBefore(CountAll()),
      fDigestBefore(DigestOfAll()) {
  RegisterServices();
  if (fWatcher) fWatcher->AcceptUnknown(fBefore);
  SetCurrent(this);
  const bool takesPages = TakesPages(options.fMemory, TheLedger());
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

std::uint64_t HostState::TakeDigest() const { return DigestOfAll() - fDigestBefore; }

// An empty file means that nothing is held.
void HostState::ListLeaks() const {
  OutputFile& file = *fObserving.fLeaks;
  file.IsForked();
  for (const LiveThing& thing : TheLedger()->Live(0)) {
    std::ostringstream text;
    text << thing;
    file.Write(text.str());
  }
}

void HostState::ReportLeaks() const noexcept {
  try {
    if (fObserving.fLeaks) ListLeaks();
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
