#pragma once

#include "Binder.h"
#include "ClientPurges.h"
#include "FaultRules.h"
#include "Reports.h"
#include "StreamLog.h"
#include "kaphost/Host.h"

namespace KAPHost {

// What belongs to the one live host, reached by its procedures. Atoms, containers and the like
// belong to the process: components may hold them longer than the host lives.
class HostState {
 public:
  // Throws std::logic_error when there is one already.
  explicit HostState(HostOptions options);
  HostState(const HostState&) = delete;
  HostState& operator=(const HostState&) = delete;
  ~HostState();

  // Null when there is no host.
  static HostState* Current() noexcept;

  // A procedure, unless it is hidden or a name is null.
  void* Find(const char* interfaceName, const char* methodName,
             const char* procName) const noexcept;
  // False when it is refused, or a name or the procedure is null. Throws std::bad_alloc.
  bool Register(const char* interfaceName, const char* methodName, const char* procName,
                void* proc);
  bool RegisterForComponent(const char* interfaceName, const char* methodName, const char* procName,
                            void* proc);
  // Without what was held before this host.
  Snapshot TakeSnapshot() const;

  Binder fBinder;
  FaultRules fFaultRules;
  Reports fReports;
  StreamLog fStreamLog;
  ClientPurges fClientPurges;

 private:
  void ReportLeaks() const noexcept;

  std::function<void(const Snapshot&)> fOnLeak;
  Snapshot fBefore;
};

// Adds to the reports of the live host, if any.
void Report(const char* message) noexcept;

}  // namespace KAPHost
