// SPDX-License-Identifier: MIT
#include "trace/CallTrace.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "errors/Errors.h"
#include "faults/FaultRules.h"
#include "sites/ThreadState.h"
#include "sites/Values.h"

namespace KAPHost {

namespace {

// The calls that describing a value makes are not calls of a component: they are neither observed
// nor failed.
class Describing {
 public:
  Describing() { tThread.fIsDescribing = tIsExempt = true; }
  Describing(const Describing&) = delete;
  Describing& operator=(const Describing&) = delete;
  ~Describing() { tThread.fIsDescribing = tIsExempt = false; }
};

template <class Names>
bool Contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// The times of a trace count from here: hosts of a process may write to one file.
std::chrono::nanoseconds SinceStart(std::chrono::steady_clock::time_point time) {
  static const auto start = time;
  return std::max(time - start, std::chrono::nanoseconds(0));
}

TracedCall Traced(const void* key, const ObservedCall& call, const TraceEntry& entry) {
  TracedCall traced;
  traced.fKey = key;
  traced.fInterface = call.fInterface;
  traced.fMethod = call.fMethod.fMethod;
  traced.fCaller = call.fCaller;
  traced.fCallee = call.fCallee;
  traced.fThread = ThreadNumber();
  traced.fDepth = entry.fDepth;
  traced.fStart = SinceStart(entry.fStart);
  traced.fArguments = entry.fArguments;
  return traced;
}

}  // namespace

CallTrace::CallTrace(const DebugOptions& options, std::unique_ptr<TraceWriter> writer,
                     const Checker* checker, const Ledger* ledger)
    : fOptions(options), fChecker(checker), fLedger(ledger), fWriter(std::move(writer)) {
  SinceStart(std::chrono::steady_clock::now());
}

CallTrace::~CallTrace() { fWriter->Finish(); }

bool CallTrace::Shows(const ObservedCall& call) const {
  const auto& interfaces = fOptions.fInterfaces;
  const auto& components = fOptions.fComponents;
  return (interfaces.empty() || Contains(interfaces, call.fInterface)) &&
         (components.empty() || Contains(components, call.fCaller) ||
          Contains(components, call.fCallee));
}

std::string CallTrace::Describe(const WatchedValue& value) const {
  if (fChecker && !fChecker->IsUsable(value)) {
    const auto handle = value.As<const void*>();
    const bool isDead = fLedger->Find(handle).fState == Ledger::State::kDead;
    return isDead ? "dead " + fLedger->NameOf(handle) : "invalid handle";
  }
  const Describing describing;
  return DescribeValue(value, fOptions.fKindOf);
}

std::string CallTrace::Arguments(const ObservedCall& call) const {
  std::string text;
  for (const WatchedValue& value : call.fArguments) {
    if (&value == call.Place()) continue;
    text.append(text.empty() ? "" : ", ").append(Describe(value));
  }
  return text;
}

TraceEntry CallTrace::Begin(const void* key, const ObservedCall& call) {
  TraceEntry entry{tThread.fDepth, {}, Arguments(call)};
  entry.fStart = std::chrono::steady_clock::now();
  fWriter->Begin(Traced(key, call, entry));
  return entry;
}

void CallTrace::End(const void* key, const ObservedCall& call, const TraceEntry& entry,
                    const WatchedValue* result, std::chrono::steady_clock::time_point end) {
  TracedCall traced = Traced(key, call, entry);
  traced.fDuration = end - entry.fStart;
  const bool isError = result && result->fKind == ValueKind::kError && result->fBits != 0;
  if (!result) {
    traced.fResult = traced.fError = "an exception";
  } else if (result->fKind == ValueKind::kError && !isError) {
    traced.fResult = "ok";
  } else {
    traced.fResult = Describe(*result);
    const bool isUsable = !fChecker || fChecker->IsUsable(*result);
    if (isError && isUsable) traced.fError = MessageOf(*result->As<KAPError*>());
    if (isError && !isUsable) traced.fError = traced.fResult;
  }
  if (call.Place() && result && !isError) traced.fPlaced = Describe(ValueAt(*call.Place()));
  fWriter->End(traced);
}

void CallTrace::NoteUnseen(const std::string& interfaceName, const char* methodName,
                           const char* why) {
  if (!fOptions.fInterfaces.empty() && !Contains(fOptions.fInterfaces, interfaceName)) return;
  fWriter->Note(interfaceName + '.' + methodName + ' ' + why + ": its calls are not traced",
                SinceStart(std::chrono::steady_clock::now()));
}

}  // namespace KAPHost
