// SPDX-License-Identifier: MIT
#include "trace/Watcher.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <iostream>
#include <new>
#include <stdexcept>
#include <utility>

#include "base/Current.h"
#include "base/Modules.h"
#include "base/Reports.h"
#include "checks/Misuse.h"
#include "errors/Errors.h"
#include "kap/KAPHostInterfaces.h"
#include "trace/ThreadState.h"
#include "trace/Values.h"

namespace KAPHost {

namespace {

using namespace std::string_view_literals;
using HostStreamSet = KAP_T_MT::TKAPInterfaceSet<
    KAP_T_MT::KAPSimpleStreamInterface, KAP_T_MT::KAPRewindableStreamInterface,
    KAP_T_MT::KAPPositionableStreamInterface, KAP_T_MT::KAPDataStoreInterface,
    KAP_T_MT::KAPSizedDataStoreInterface, KAP_T_MT::KAPDataBlockStreamInterface>;

constexpr const char* kHost = "host";

// Observing leaves the error number of the system as the procedure left it.
class KeptErrno {
 public:
  KeptErrno() = default;
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;
  ~KeptErrno() { errno = fNumber; }

 private:
  const int fNumber = errno;
};

// The calls that describing a value makes are not calls of a component.
class Describing {
 public:
  Describing() { tThread.fIsDescribing = true; }
  Describing(const Describing&) = delete;
  Describing& operator=(const Describing&) = delete;
  ~Describing() { tThread.fIsDescribing = false; }
};

// Looking for a name takes a lock of the loader, so each thread remembers some. Loading and
// unloading forgets them.
const char* CallerAt(const void* address) noexcept {
  struct Known {
    const void* fAddress;
    unsigned long fTime;
    const char* fName;
  };
  constexpr std::size_t kSize = 64;
  static thread_local constinit Known known[kSize] = {};
  Known& one = known[(reinterpret_cast<std::uintptr_t>(address) >> 2) % kSize];
  const unsigned long time = ModulesTime();
  if (one.fAddress != address || one.fTime != time) one = {address, time, NameOfCodeAt(address)};
  return one.fName;
}

template <class Names>
bool Contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

CheckedCall Checked(const DeclaredMethod& method, const char* interfaceName, const char* caller,
                    bool isHosts, std::span<const WatchedValue> arguments) {
  return {interfaceName, method.fMethod, method.fTraits, caller, isHosts, arguments};
}

}  // namespace

unsigned ThreadNumber() noexcept {
  static constinit std::atomic<unsigned> last{0};
  if (tThread.fNumber == 0) tThread.fNumber = ++last;
  return tThread.fNumber;
}

// ---- Which procedure observes which ----

Watcher::Watcher(DebugOptions options, bool checks, bool complains)
    : fOptions(std::move(options)), fComplains(complains) {
  if (!fOptions.fTrace.empty()) fTrace = TraceWriter::Open(fOptions.fTrace);
  if (checks || fOptions.fStacks || !fOptions.fLeaks.empty()) {
    fLedger = std::make_unique<Ledger>(Ledger::Options{fOptions.fStacks, checks});
  }
  if (checks) fChecker = std::make_unique<Checker>(*fLedger);
  auto methods = Declare<KAP_T_MT::KAPHostInterfaceSet, HostStreamSet>();
  methods.insert(methods.end(), fOptions.fDeclared.begin(), fOptions.fDeclared.end());
  for (const DeclaredMethod* method : methods) {
    fMethods[method->fMethod].push_back(method);
    fEntries.insert(method->fEntries.begin(), method->fEntries.end());
  }
}

Watcher::~Watcher() {
  if (fTrace) fTrace->Finish();
}

// A component may register methods of a declared interface under the name of another one, as those
// of streams are: then the method and the procedure name say what it is.
const DeclaredMethod* Watcher::Declared(std::string_view interfaceName, const Key& names) const {
  const auto found = fMethods.find(names.first);
  if (found == fMethods.end()) return nullptr;
  const DeclaredMethod* alike = nullptr;
  for (const DeclaredMethod* method : found->second) {
    if (method->fProc != names.second) continue;
    if (method->fInterface == interfaceName) return method;
    alike = method;
  }
  return alike;
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

void Watcher::Note(const std::string& interfaceName, const char* methodName, const char* why) {
  if (!fTrace) return;
  if (!fOptions.fInterfaces.empty() && !Contains(fOptions.fInterfaces, interfaceName)) return;
  fTrace->Note(interfaceName + '.' + methodName + ' ' + why + ": its calls are not traced");
}

void* Watcher::Watch(const char* interfaceName, const char* methodName, const char* procName,
                     void* proc, bool isHosts) {
  if (!interfaceName || !methodName || !procName || !proc || fEntries.contains(proc)) return proc;
  const DeclaredMethod* const method = Declared(interfaceName, {methodName, procName});
  const std::lock_guard lock(fMutex);
  WatchedProc* const chosen = method ? Choose(*method, interfaceName, proc) : nullptr;
  if (!chosen) {
    Note(interfaceName, methodName, method ? "has too many procedures" : "is not declared");
    return proc;
  }
  static auto* const names = new std::set<std::string>;  // calls may outlive the host
  fTaken.insert(chosen);
  chosen->fMethod = method;
  chosen->fInterface = names->insert(interfaceName).first->c_str();
  chosen->fCallee = isHosts ? kHost : NameOfCodeAt(proc);
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

// A procedure that ends in a call may jump to it instead, and the call returns to where the
// procedure was called from. That is an observing function, all of which are shorter than this.
const char* Watcher::CallerOf(const WatchedCall& call) noexcept {
  constexpr std::uintptr_t kLongest = 1024;
  if (const WatchedCall* const outer = call.fOuter) {
    const auto start = reinterpret_cast<std::uintptr_t>(outer->fWatchCall);
    const auto address = reinterpret_cast<std::uintptr_t>(call.fReturnAddress);
    if (address - start < kLongest) return outer->fCallee;
  }
  return CallerAt(call.fReturnAddress);
}

// ---- A call ----

WatchedCall::WatchedCall(const WatchedProc& proc, const void* returnAddress, const void* watchCall,
                         std::span<const WatchedValue> arguments) noexcept
    : fWatcher(tThread.fIsDescribing ? nullptr : Current<Watcher>()),
      fProc(proc),
      fReturnAddress(returnAddress),
      fWatchCall(watchCall),
      fArguments(arguments) {
  if (!fWatcher) return;
  const KeptErrno kept;
  fOuter = std::exchange(tThread.fInnermost, this);
  try {
    fWatcher->Begin(*this);
  } catch (const std::bad_alloc&) {
    // The call is made all the same, and what could not be noted is missing.
  }
}

WatchedCall::~WatchedCall() {
  if (fWatcher) tThread.fInnermost = fOuter;
}

KAPError* WatchedCall::Refusal() const noexcept { return InvalidArgument(); }

void WatchedCall::Return(const WatchedValue& result) noexcept { End(&result); }
void WatchedCall::Throw() noexcept { End(nullptr); }

// A host that ends during the call, which its contract rules out, is not asked.
void WatchedCall::End(const WatchedValue* result) noexcept {
  if (!fWatcher || fWatcher != Current<Watcher>()) return;
  const KeptErrno kept;
  try {
    fWatcher->End(*this, result);
  } catch (const std::bad_alloc&) {
    // The trace lacks the end of the call.
  }
}

bool Watcher::IsTraced(const WatchedCall& call) const {
  const auto& interfaces = fOptions.fInterfaces;
  const auto& components = fOptions.fComponents;
  return fTrace && (interfaces.empty() || Contains(interfaces, call.fInterface)) &&
         (components.empty() || Contains(components, call.fCaller) ||
          Contains(components, call.fCallee));
}

// What the checks know to be dead or of another kind is not looked at.
std::string Watcher::Describe(const WatchedValue& value) const {
  const KAPResource resource = ResourceOf(value.fKind);
  if (fChecker && resource != KAPResource::kNothing && value.fBits != 0) {
    const auto found = fLedger->Find(value.As<const void*>());
    const bool isCore = resource == KAPResource::kError && IsCoreError(*value.As<KAPError*>());
    if (!isCore && found.fState == Ledger::State::kDead) {
      return "dead " + fLedger->NameOf(value.As<const void*>());
    }
    const bool isFormer =
        found.fState == Ledger::State::kUnknown && fChecker->AcceptsUnknown(resource);
    if (!isCore && !isFormer && found.fResource != resource) return "invalid handle";
  }
  const Describing describing;
  return DescribeValue(value, fOptions.fKindOf);
}

std::string Watcher::Arguments(const WatchedCall& call) const {
  std::string text;
  for (const WatchedValue& value : call.fArguments) {
    if (value.fKind == ValueKind::kPlace && value.fBits != 0) continue;
    text.append(text.empty() ? "" : ", ").append(Describe(value));
  }
  return text;
}

TracedCall Watcher::Traced(const WatchedCall& call, std::chrono::nanoseconds sinceStart) {
  TracedCall traced;
  traced.fKey = &call;
  traced.fInterface = call.fInterface;
  traced.fMethod = call.fProc.fMethod.load()->fMethod;
  traced.fCaller = call.fCaller;
  traced.fCallee = call.fCallee;
  traced.fThread = ThreadNumber();
  traced.fDepth = call.fDepth;
  traced.fStart = sinceStart;
  traced.fArguments = call.fText;
  return traced;
}

void Watcher::BeginTrace(WatchedCall& call) {
  call.fText = Arguments(call);
  call.fDepth = tThread.fDepth;
  call.fStart = std::chrono::steady_clock::now();
  fTrace->Begin(Traced(call, call.fStart - fStart));
  call.fIsTraced = true;
  ++tThread.fDepth;
}

void Watcher::Begin(WatchedCall& call) {
  call.fInterface = call.fProc.fInterface;
  call.fCallee = call.fProc.fCallee;
  call.fCaller = CallerOf(call);
  ThreadNumber();
  // Described before the checks fill the result place and before a release ends the thing.
  if (IsTraced(call)) BeginTrace(call);
  if (fChecker) {
    const CheckedCall checked = Checked(*call.fProc.fMethod.load(), call.fInterface, call.fCaller,
                                        call.fCallee == kHost, call.fArguments);
    for (const auto& finding : fChecker->Begin(checked, call.fIsRefused, call.fObject)) {
      Report(finding.fHeadline, finding.fThing, finding.fOther);
    }
  }
  if (fLedger && call.fCallee == kHost && !call.fArguments.empty()) {
    const bool releases =
        Contains(std::array{"Release"sv, "DeleteStringAtom"sv, "DecrementWithoutDelete"sv},
                 call.fProc.fMethod.load()->fMethod);
    const WatchedValue& first = call.fArguments[0];
    if (releases && ResourceOf(first.fKind) != KAPResource::kNothing && !call.fIsRefused) {
      fLedger->Release(first.As<const void*>(), call.fCaller);
    }
  }
}

void Watcher::EndTrace(WatchedCall& call, const WatchedValue* result,
                       std::chrono::nanoseconds duration) const {
  --tThread.fDepth;
  TracedCall traced = Traced(call, call.fStart - fStart);
  traced.fDuration = duration;
  if (!result) {
    traced.fResult = traced.fError = "an exception";
  } else if (result->fKind == ValueKind::kError && result->fBits == 0) {
    traced.fResult = "ok";
  } else {
    traced.fResult = Describe(*result);
    if (result->fKind == ValueKind::kError) traced.fError = MessageOf(*result->As<KAPError*>());
  }
  const bool isPlace = !call.fArguments.empty() && call.fArguments[0].fKind == ValueKind::kPlace &&
                       call.fArguments[0].fBits != 0;
  if (isPlace && traced.fError.empty()) traced.fPlaced = Describe(ValueAt(call.fArguments[0]));
  fTrace->End(traced);
}

// The order matters: the ledger knows a new thing before the trace describes it, and the checks
// replace what they wrote into an unset place before anyone reads it.
void Watcher::End(WatchedCall& call, const WatchedValue* result) {
  const auto duration = std::chrono::steady_clock::now() - call.fStart;
  if (fChecker && !call.fIsRefused) {
    const CheckedCall checked = Checked(*call.fProc.fMethod.load(), call.fInterface, call.fCaller,
                                        call.fCallee == kHost, call.fArguments);
    for (const auto& finding : fChecker->End(checked, result, call.fObject)) {
      Report(finding.fHeadline, finding.fThing, finding.fOther);
    }
  }
  if (fLedger && result) CountReferences(call, *result);
  if (call.fIsTraced) EndTrace(call, result, duration);
}

void Watcher::TakeResult(const WatchedCall& call, const WatchedValue& value) {
  const KAPResource resource = ResourceOf(value.fKind);
  const void* const handle = value.As<const void*>();
  if (resource == KAPResource::kNothing || !handle) return;
  if (resource == KAPResource::kError && IsCoreError(*value.As<KAPError*>())) return;
  // A component that returns a dead handle transfers no reference.
  const bool isDead = fLedger->Find(handle).fState == Ledger::State::kDead;
  if (isDead && call.fCallee != kHost) return;
  fLedger->Take(resource, handle, call.fCaller);
  if (call.fCallee != kHost) fLedger->Release(handle, call.fCallee);
}

void Watcher::CountReferences(const WatchedCall& call, const WatchedValue& result) {
  const bool isPlace = !call.fArguments.empty() && call.fArguments[0].fKind == ValueKind::kPlace;
  TakeResult(call, result);
  if (isPlace && call.fArguments[0].fBits != 0 && result.fBits == 0) {
    TakeResult(call, ValueAt(call.fArguments[0]));
  }
  const bool adds = call.fCallee == kHost && !call.fArguments.empty() && !call.fIsRefused &&
                    call.fProc.fMethod.load()->fMethod == "AddRef"sv;
  const bool isFalse = result.fKind == ValueKind::kBool && result.fBits == 0;
  if (!adds || isFalse) return;
  const void* const handle = call.fArguments[0].As<const void*>();
  if (fLedger->Find(handle).fState == Ledger::State::kDead) return;
  TakeResult(call, call.fArguments[0]);
}

// ---- Reports ----

void Watcher::Report(const std::string& headline, const void* thing,
                     const std::string& other) const {
  std::string text = "KAP host: " + headline;
  if (tThread.fInnermost) text += DescribeSite("used", fLedger->Here());
  text += other;
  if (thing) text += fLedger->History(thing);
  if (fComplains) std::cerr << text + '\n';
  KAPHost::Report(text.c_str());
}

Site CurrentSite(bool withStack) noexcept {
  const WatchedCall* const call = tThread.fInnermost;
  return call ? Watcher::SiteOf(*call, withStack) : Site();
}

Site Watcher::SiteOf(const WatchedCall& call, bool withStack) noexcept {
  return {call.fCaller,
          call.fInterface,
          call.fProc.fMethod.load()->fMethod,
          call.fCallee == kHost ? nullptr : call.fCallee,
          ThreadNumber(),
          withStack ? CaptureStack(call.fReturnAddress) : nullptr};
}

bool HasMisuseChecks() noexcept {
  const Watcher* const watcher = Current<Watcher>();
  return watcher && watcher->HasChecks();
}

void ReportMisuse(const std::string& headline, const void* thing) noexcept {
  const Watcher* const watcher = Current<Watcher>();
  if (!watcher || !watcher->HasChecks()) return;
  try {
    watcher->Report(headline, thing, "");
  } catch (const std::bad_alloc&) {
    Report("KAP host: misuse of memory; no memory to describe it");
  }
}

namespace {

template <class Act>
void WithLedger(Act act) noexcept {
  const Watcher* const watcher = Current<Watcher>();
  if (!watcher || !watcher->HasLedger()) return;
  try {
    act(*watcher->TheLedger());
  } catch (const std::bad_alloc&) {
    // The ledger lacks the thing, and the list of what is held as well.
  }
}

}  // namespace

void NoteThing(KAPResource resource, const void* thing) noexcept {
  const WatchedCall* const call = tThread.fInnermost;
  WithLedger([&](Ledger& ledger) {
    ledger.Take(resource, thing, call ? CurrentSite(false).fCaller : kHost);
  });
}

void EndThing(const void* thing, const std::string& what) noexcept {
  WithLedger([&](Ledger& ledger) { ledger.End(thing, what); });
}

void ForgetThing(const void* thing) noexcept {
  WithLedger([&](Ledger& ledger) { ledger.Forget(thing); });
}

bool IsDeadThing(const void* thing) noexcept {
  bool isDead = false;
  WithLedger(
      [&](const Ledger& ledger) { isDead = ledger.Find(thing).fState == Ledger::State::kDead; });
  return isDead;
}

}  // namespace KAPHost
