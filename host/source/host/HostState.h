// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/Reports.h"
#include "binder/Binder.h"
#include "caches/ClientPurges.h"
#include "faults/FaultRules.h"
#include "kaphost/Host.h"
#include "quarantine/Quarantine.h"
#include "streams/StreamLog.h"
#include "trace/OutputFile.h"
#include "trace/Watcher.h"

namespace KAPHost {

// What belongs to the one live host. Atoms, containers and the like belong to the process:
// components may hold them longer than the host lives.
class HostState {
 public:
  // Throws std::logic_error when there is one already.
  explicit HostState(HostOptions options);
  HostState(const HostState&) = delete;
  HostState& operator=(const HostState&) = delete;
  ~HostState();

  // Without what was held before this host.
  Snapshot TakeSnapshot() const;
  std::uint64_t TakeDigest() const;
  // Null unless something is on that needs it.
  Ledger* TheLedger() const { return fWatcher ? fWatcher->TheLedger() : nullptr; }

 private:
  // Claims the process for one host.
  struct Claim {
    Claim();
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    ~Claim();
  };

  // What sees the calls, and the file for the list of what is held at the end; null unless asked
  // for.
  struct Observing {
    std::unique_ptr<Watcher> fWatcher;
    std::unique_ptr<OutputFile> fLeaks;
  };

  // Adds the words of the environment. Whether they have turned the checks on.
  static bool AddEnvironment(HostOptions& options);
  template <class Open>
  static void OpenOutput(std::string& path, const std::string& ofProgram, Open open);
  static Observing StartObserving(HostOptions& options);
  void RegisterServices();
  void ReportLeaks() const noexcept;
  void ListLeaks() const;

  const Claim fClaim;
  const Observing fObserving;

 public:
  Watcher* const fWatcher;  // null when there is nothing to watch
  FaultRules fFaultRules;
  Binder fBinder{fFaultRules};
  Reports fReports;
  StreamLog fStreamLog;
  ClientPurges fClientPurges;
  Quarantine fQuarantine;

 private:
  const std::function<void(const Snapshot&)> fOnLeak;
  const Snapshot fBefore;
  const std::uint64_t fDigestBefore;
};

}  // namespace KAPHost
