// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "checks/Checker.h"
#include "kaphost/Debug.h"
#include "trace/TraceWriter.h"

namespace KAPHost {

// One traced call between its begin and its end.
struct TraceEntry {
  unsigned fDepth;
  std::chrono::steady_clock::time_point fStart;
  std::string fArguments;
};

// Which calls a trace shows, and how. Thread-safe.
class CallTrace {
 public:
  // `checker` may be null; what it knows to be dead or of another kind is not looked at.
  CallTrace(const DebugOptions& options, std::unique_ptr<TraceWriter> writer,
            const Checker* checker, const Ledger* ledger);
  CallTrace(const CallTrace&) = delete;
  CallTrace& operator=(const CallTrace&) = delete;
  ~CallTrace();

  bool Shows(const ObservedCall& call) const;
  // `key` tells calls under way from each other. Both throw std::bad_alloc.
  TraceEntry Begin(const void* key, const ObservedCall& call);
  // `result` is null if the call has thrown.
  void End(const void* key, const ObservedCall& call, const TraceEntry& entry,
           const WatchedValue* result, std::chrono::steady_clock::time_point end);
  // Says that the calls of a procedure are not shown, and why.
  void NoteUnseen(const std::string& interfaceName, const char* methodName, const char* why);

 private:
  std::string Describe(const WatchedValue& value) const;
  std::string Arguments(const ObservedCall& call) const;

  const DebugOptions& fOptions;
  const Checker* const fChecker;
  const Ledger* const fLedger;
  const std::unique_ptr<TraceWriter> fWriter;
};

}  // namespace KAPHost
