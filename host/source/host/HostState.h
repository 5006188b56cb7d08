// SPDX-License-Identifier: MIT
#pragma once

#include "base/Reports.h"
#include "binder/Binder.h"
#include "caches/ClientPurges.h"
#include "quarantine/Quarantine.h"
#include "faults/FaultRules.h"
#include "kaphost/Host.h"
#include "streams/StreamLog.h"
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
  // Null unless something is on that needs it.
  const Ledger* TheLedger() const { return fWatcher ? fWatcher->TheLedger() : nullptr; }

 private:
  // Claims the process for one host.
  struct Claim {
    Claim();
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    ~Claim();
  };

  // Adds the words of the environment, and makes the watcher if there is anything to watch.
  static std::unique_ptr<Watcher> MakeWatcher(HostOptions& options);
  void RegisterServices();
  void ReportLeaks() const noexcept;
  void ListLeaks() const;

  const Claim fClaim;

 public:
  const std::unique_ptr<Watcher> fWatcher;  // null when there is nothing to watch
  FaultRules fFaultRules;
  Binder fBinder{fFaultRules};
  Reports fReports;
  StreamLog fStreamLog;
  ClientPurges fClientPurges;
  Quarantine fQuarantine;

 private:
  const std::function<void(const Snapshot&)> fOnLeak;
  const std::string fLeaks;
  const Snapshot fBefore;
};

}  // namespace KAPHost
