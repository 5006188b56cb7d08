// SPDX-License-Identifier: MIT
#include "trace/Watcher.h"

#include <atomic>
#include <iostream>
#include <set>

#include "base/Modules.h"
#include "base/Reports.h"
#include "checks/References.h"
#include "kap/KAPHostInterfaces.h"
#include "sites/ThreadState.h"

namespace KAPHost {

// ---- Which procedure observes which ----

Watcher::Watcher(DebugOptions options, std::unique_ptr<TraceWriter> trace, bool checks,
                 bool alsoToStandardError)
    : fOptions(std::move(options)), fAlsoToStandardError(alsoToStandardError) {
  if (checks || fOptions.fStacks || !fOptions.fLeaks.empty()) {
    fLedger = std::make_unique<Ledger>(fOptions.fStacks);
  }
  if (checks) fChecker = std::make_unique<Checker>(*fLedger);
  if (trace) {
    fTrace = std::make_unique<CallTrace>(fOptions, std::move(trace), fChecker.get(), fLedger.get());
  }
  // The first stack of a process loads a library. Later ones may be wanted under locks.
  if (fOptions.fStacks) CaptureStack(nullptr);
  const auto ofStreams =
      Declare<KAP_T_MT::KAPStreamInterfaceSet, KAP_T_MT::KAPDataStoreInterfaceSet>();
  fStreamMethods.insert(ofStreams.begin(), ofStreams.end());
  auto methods = Declare<KAP_T_MT::KAPHostInterfaceSet>();
  methods.insert(methods.end(), ofStreams.begin(), ofStreams.end());
  methods.insert(methods.end(), fOptions.fDeclared.begin(), fOptions.fDeclared.end());
  for (const DeclaredMethod* method : methods) {
    fMethods[method->fMethod].push_back(method);
    fEntries.insert(method->fEntries.begin(), method->fEntries.end());
  }
}

Watcher::~Watcher() = default;

// A method has the name of its interface, except those of streams: a component may register them
// under a name of its own. Other methods of equal names may differ in their arguments.
const DeclaredMethod* Watcher::Declared(std::string_view interfaceName, const Key& names) const {
  const auto found = fMethods.find(names.first);
  if (found == fMethods.end()) return nullptr;
  const DeclaredMethod* ofStream = nullptr;
  for (const DeclaredMethod* method : found->second) {
    if (method->fProc != names.second) continue;
    if (method->fInterface == interfaceName) return method;
    if (fStreamMethods.contains(method)) ofStream = method;
  }
  return ofStream;
}

// A procedure keeps its observing one, also from one host to the next. One that was never used
// comes before one that a former host used, whose address somebody may have kept.
WatchedProc* Watcher::Choose(const DeclaredMethod& method, const char* interfaceName, void* proc) {
  WatchedProc* unused = nullptr;
  WatchedProc* former = nullptr;
  for (unsigned i = kWatchedVariants; i-- > 0;) {
    WatchedProc& one = method.fProcs[i];
    const char* const name = one.fInterface;
    if (one.fTarget == proc && name == std::string_view(interfaceName)) return &one;
    if (!one.fTarget) {
      unused = &one;
    } else if (!fTaken.contains(&one)) {
      former = &one;
    }
  }
  return unused ? unused : former;
}

// An interface without a declaration is not news to those who check, a method that they have
// declared is.
void Watcher::NoteUnseen(const char* interfaceName, const char* methodName, bool isDeclared) {
  const char* const why = isDeclared ? "has too many procedures" : "is not declared";
  if (fTrace) return fTrace->NoteUnseen(interfaceName, methodName, why);
  if (!isDeclared) return;
  const std::string method = std::string(interfaceName) + '.' + methodName;
  KAPHost::Report(("KAP host: " + method + ' ' + why + ": its calls are not checked").c_str());
}

void* Watcher::Watch(const char* interfaceName, const char* methodName, const char* procName,
                     void* proc, bool isHosts) {
  if (!interfaceName || !methodName || !procName || !proc || fEntries.contains(proc)) return proc;
  const DeclaredMethod* const method = Declared(interfaceName, {methodName, procName});
  const std::lock_guard lock(fMutex);
  WatchedProc* const chosen = method ? Choose(*method, interfaceName, proc) : nullptr;
  if (!chosen) {
    NoteUnseen(interfaceName, methodName, method);
    return proc;
  }
  static auto* const names = new std::set<std::string>;  // calls may outlive the host
  fTaken.insert(chosen);
  chosen->fMethod = method;
  chosen->fInterface = names->insert(interfaceName).first->c_str();
  chosen->fCallee = isHosts ? kHost : NameOfCodeAt(proc);
  chosen->fIsUnloaded = false;
  chosen->fTarget.store(proc, std::memory_order_release);
  return method->fEntries[static_cast<std::size_t>(chosen - method->fProcs)];
}

void Watcher::AcceptUnknown(const Snapshot& held) {
  if (!fChecker) return;
  for (const KAPResource resource :
       {KAPResource::kAtom, KAPResource::kError, KAPResource::kContainer, KAPResource::kBuffer}) {
    if (held.Total(resource) != Holding()) fChecker->AcceptUnknown(resource);
  }
}

void Watcher::NoteUnloaded(const Span& span) noexcept {
  const std::lock_guard lock(fMutex);
  for (WatchedProc* const proc : fTaken) {
    if (span.Contains(proc->fTarget.load())) proc->fIsUnloaded = true;
  }
}

void Watcher::ForgetBinding(const char* component) {
  if (fChecker) fChecker->ForgetBinding(component);
}

// ---- A call ----

// The arguments are described before the checks fill the result place and before a release ends the
// thing.
void Watcher::Begin(WatchedCall& call) {
  const ObservedCall observed = Observed(call);
  if (fTrace && fTrace->Shows(observed)) {
    call.fTraced = std::make_unique<TraceEntry>(fTrace->Begin(&call, observed));
    ++tThread.fDepth;
  }
  if (fChecker) {
    if (call.fProc.fIsUnloaded) Report("call of a procedure whose component was unloaded", nullptr);
    Report(fChecker->Begin(observed, call.fIsRefused, call.fObject));
  }
  if (!fLedger || call.fIsRefused) return;
  const void* const overReleased = CountReleases(*fLedger, observed);
  if (!overReleased || !fChecker || fChecker->AcceptsUnknown(ResourceOf(call.fArguments[0].fKind)))
    return;
  Report("release of a reference to " + fLedger->NameOf(overReleased) + " that no component has",
         overReleased);
}

// The ledger knows a new thing before the trace describes it, and the checks replace what they
// wrote into an unset place before anyone reads it.
void Watcher::End(WatchedCall& call, const WatchedValue* result) {
  const auto end = std::chrono::steady_clock::now();
  const ObservedCall observed = Observed(call);
  if (fChecker && !call.fIsRefused) Report(fChecker->End(observed, result));
  if (fLedger && result) CountResults(*fLedger, observed, *result, call.fIsRefused);
  if (!call.fTraced) return;
  --tThread.fDepth;
  const std::unique_ptr<TraceEntry> entry = std::move(call.fTraced);
  fTrace->End(&call, observed, *entry, result, end);
}

void Watcher::Leave(WatchedCall& call) noexcept {
  if (call.fTraced) --tThread.fDepth;
  if (call.fObject) fChecker->EndUse(call.fObject);
}

ObservedCall Watcher::Observed(const WatchedCall& call) noexcept {
  return {call.fInterface, *call.fProc.fMethod.load(), call.fCaller,
          call.fCallee,    call.fCallee == kHost,      call.fArguments};
}

// ---- Reports ----

void Watcher::Report(const Checker::Findings& findings) const {
  for (const auto& finding : findings) {
    Report(finding.fHeadline, finding.fThing, finding.fOther);
  }
}

void Watcher::Report(const std::string& headline, const void* thing,
                     const std::string& other) const {
  std::string text = "KAP host: " + headline;
  if (tThread.fInnermost) text += DescribeSite("used", fLedger->Here());
  text += other;
  if (thing) text += fLedger->History(thing);
  if (fAlsoToStandardError) std::cerr << text + '\n';
  KAPHost::Report(text.c_str());
}

std::shared_ptr<const Stack> Watcher::StackHere() const noexcept { return fLedger->Here().fStack; }

void Watcher::Died(const void* record, const std::string& what,
                   std::shared_ptr<const Stack> stack) {
  fLedger->End(record, what, std::move(stack));
}

void Watcher::Freed(const void* record) noexcept { fLedger->Forget(record); }

// What is not known to be an error is one of a former host, or none at all.
void Watcher::HostTook(const KAPError& error, const void* proc) noexcept {
  const auto [state, resource] = fLedger->Find(&error);
  if (state != Ledger::State::kAlive || resource != KAPResource::kError) return;
  try {
    fLedger->Take(KAPResource::kError, &error, kHost);
    fLedger->Release(&error, NameOfCodeAt(proc));
  } catch (const std::bad_alloc&) {
    // The list of what is held names the wrong holder.
  }
}

void Watcher::HostReleased(const KAPError& error) noexcept {
  fLedger->ReleaseIfHeld(&error, kHost);
}

}  // namespace KAPHost
