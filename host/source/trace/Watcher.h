// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "base/Modules.h"
#include "checks/Checker.h"
#include "checks/Ledger.h"
#include "kaphost/Debug.h"
#include "kaphost/Snapshot.h"
#include "quarantine/Quarantine.h"
#include "trace/CallTrace.h"

namespace KAPHost {

// Observes calls: hands out the observing procedures, and passes what they see to the trace, the
// ledger and the checks. A host has one only if its options ask for any of these.
class Watcher final : public HandleObserver {
 public:
  // `trace` may be null. With `alsoToStandardError`, reports of misuse go there as well.
  Watcher(DebugOptions options, std::unique_ptr<TraceWriter> trace, bool checks,
          bool alsoToStandardError);
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  ~Watcher() override;

  // The procedure to hand out for one that is registered; `proc` itself if it cannot be observed.
  // `isHosts` says whether it is the host's own.
  void* Watch(const char* interfaceName, const char* methodName, const char* procName, void* proc,
              bool isHosts);

  // Handles that components still hold from a former host are unknown here; not misuse.
  void AcceptUnknown(const Snapshot& held);

  bool HasLedger() const noexcept { return fLedger != nullptr; }
  bool HasChecks() const noexcept { return fChecker != nullptr; }
  Ledger* TheLedger() const noexcept { return fLedger.get(); }

  // The component is bound anew: by whichever thread is the first.
  void ForgetBinding(const char* component);

  // The component whose code is in the span is unloaded: calls of its procedures are misuse, though
  // its library may stay in memory.
  void NoteUnloaded(const Span& span) noexcept;

  // For WatchedCall. Begin and End throw std::bad_alloc, Leave undoes all that Begin did.
  void Begin(WatchedCall& call);
  void End(WatchedCall& call, const WatchedValue* result);
  void Leave(WatchedCall& call) noexcept;

  // Adds to the reports: what is wrong with the call under way, lines about another call, and where
  // the thing was made and ended. Throws std::bad_alloc.
  void Report(const std::string& headline, const void* thing, const std::string& other) const;
  void Report(const std::string& headline, const void* thing) const override {
    Report(headline, thing, "");
  }

  std::shared_ptr<const Stack> StackHere() const noexcept override;
  void Died(const void* record, const std::string& what,
            std::shared_ptr<const Stack> stack) override;
  void Freed(const void* record) noexcept override;
  void HostTook(const KAPError& error, const void* proc) noexcept override;
  void HostReleased(const KAPError& error) noexcept override;

 private:
  using Key = std::pair<std::string, std::string>;  // method and procedure

  const DeclaredMethod* Declared(std::string_view interfaceName, const Key& names) const;
  WatchedProc* Choose(const DeclaredMethod& method, const char* interfaceName, void* proc);
  void NoteUnseen(const char* interfaceName, const char* methodName, bool isDeclared);
  void Report(const Checker::Findings& findings) const;
  static ObservedCall Observed(const WatchedCall& call) noexcept;

  const DebugOptions fOptions;
  const bool fAlsoToStandardError;
  std::unordered_map<std::string, std::vector<const DeclaredMethod*>> fMethods;
  std::unordered_set<const DeclaredMethod*> fStreamMethods;
  std::unordered_set<const void*> fEntries;  // the observing procedures
  std::mutex fMutex;
  std::unordered_set<WatchedProc*> fTaken;  // by this host
  std::unique_ptr<Ledger> fLedger;
  std::unique_ptr<Checker> fChecker;
  std::unique_ptr<CallTrace> fTrace;
};

}  // namespace KAPHost
