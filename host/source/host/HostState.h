// SPDX-License-Identifier: MIT
#pragma once

#include "base/Reports.h"
#include "binder/Binder.h"
#include "caches/ClientPurges.h"
#include "checks/Quarantine.h"
#include "faults/FaultRules.h"
#include "kaphost/Host.h"
#include "streams/StreamLog.h"

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

 private:
  // Claims the process for one host.
  struct Claim {
    Claim();
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    ~Claim();
  };

  void ReportLeaks() const noexcept;

  const Claim fClaim;

 public:
  FaultRules fFaultRules;
  Binder fBinder{fFaultRules};
  Reports fReports;
  StreamLog fStreamLog;
  ClientPurges fClientPurges;
  Quarantine fQuarantine;

 private:
  const std::function<void(const Snapshot&)> fOnLeak;
  const Snapshot fBefore;
};

}  // namespace KAPHost
