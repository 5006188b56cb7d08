// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "checks/Checker.h"
#include "checks/Ledger.h"
#include "quarantine/Quarantine.h"
#include "kaphost/Debug.h"
#include "kaphost/Snapshot.h"
#include "trace/TraceWriter.h"

namespace KAPHost {

// Observes calls: hands out the observing procedures, and passes what they see to the trace, the
// ledger and the checks. A host has one only if its options ask for any of these.
class Watcher final : public HandleObserver {
 public:
  // Throws std::runtime_error when the trace cannot be written.
  // With `complains`, reports of misuse go to standard error as well.
  Watcher(DebugOptions options, bool checks, bool complains);
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

  // For WatchedCall.
  void Begin(WatchedCall& call);
  void End(WatchedCall& call, const WatchedValue* result);
  static Site SiteOf(const WatchedCall& call, bool withStack) noexcept;

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

  static const char* CallerOf(const WatchedCall& call) noexcept;
  const DeclaredMethod* Declared(std::string_view interfaceName, const Key& names) const;
  WatchedProc* Choose(const DeclaredMethod& method, const char* interfaceName, void* proc);
  void Note(const std::string& interfaceName, const char* methodName, const char* why);
  bool IsTraced(const WatchedCall& call) const;
  std::string Describe(const WatchedValue& value) const;
  std::string Arguments(const WatchedCall& call) const;
  void BeginTrace(WatchedCall& call);
  void EndTrace(WatchedCall& call, const WatchedValue* result,
                std::chrono::nanoseconds duration) const;
  void CountReferences(const WatchedCall& call, const WatchedValue& result);
  void TakeResult(const WatchedCall& call, const WatchedValue& value);
  static TracedCall Traced(const WatchedCall& call, std::chrono::nanoseconds sinceStart);

  const DebugOptions fOptions;
  const bool fComplains;
  std::unordered_map<std::string, std::vector<const DeclaredMethod*>> fMethods;
  std::unordered_set<const void*> fEntries;  // the observing procedures
  std::mutex fMutex;
  std::unordered_set<const WatchedProc*> fTaken;  // by this host
  std::unique_ptr<TraceWriter> fTrace;
  std::unique_ptr<Ledger> fLedger;
  std::unique_ptr<Checker> fChecker;
  const std::chrono::steady_clock::time_point fStart = std::chrono::steady_clock::now();
};

}  // namespace KAPHost
