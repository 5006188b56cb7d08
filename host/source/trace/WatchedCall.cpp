// SPDX-License-Identifier: MIT
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <new>
#include <utility>

#include "base/Current.h"
#include "base/Modules.h"
#include "errors/Errors.h"
#include "kaphost/Declared.h"
#include "sites/ThreadState.h"
#include "trace/Watcher.h"

// A call that is observed, from the side of the procedure that observes it.

namespace KAPHost {

namespace {

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

}  // namespace

unsigned ThreadNumber() noexcept {
  static constinit std::atomic<unsigned> last{0};
  if (tThread.fNumber == 0) tThread.fNumber = ++last;
  return tThread.fNumber;
}

// A procedure that ends in a call may jump to it instead, and the call returns to where the
// procedure was called from. That is an observing function, all of which are shorter than this.
const char* WatchedCall::FindCaller() const noexcept {
  constexpr std::uintptr_t kLongest = 1024;
  if (fOuter) {
    const auto start = reinterpret_cast<std::uintptr_t>(fOuter->fWatchCall);
    const auto address = reinterpret_cast<std::uintptr_t>(fReturnAddress);
    if (address - start < kLongest) return fOuter->fCallee;
  }
  return CallerAt(fReturnAddress);
}

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
  fInterface = fProc.fInterface;
  fCallee = fProc.fCallee;
  fCaller = FindCaller();
  ThreadNumber();
  try {
    fWatcher->Begin(*this);
  } catch (const std::bad_alloc&) {
    // The call is made all the same, and what could not be noted is missing.
  }
}

// A host that ends during the call, which its contract rules out, is not asked.
WatchedCall::~WatchedCall() {
  if (!fWatcher) return;
  tThread.fInnermost = fOuter;
  if (fWatcher != Current<Watcher>()) return;
  const KeptErrno kept;
  fWatcher->Leave(*this);
}

KAPError* WatchedCall::Refusal() const noexcept { return InvalidArgument(); }

void WatchedCall::Return(const WatchedValue& result) noexcept { End(&result); }
void WatchedCall::Throw() noexcept { End(nullptr); }

void WatchedCall::End(const WatchedValue* result) noexcept {
  if (!fWatcher || fWatcher != Current<Watcher>()) return;
  const KeptErrno kept;
  try {
    fWatcher->End(*this, result);
  } catch (const std::bad_alloc&) {
    // The trace lacks the end of the call.
  }
}

Site CurrentSite(bool withStack) noexcept {
  const WatchedCall* const call = tThread.fInnermost;
  if (!call) return {};
  return {call->fCaller,
          call->fInterface,
          call->fProc.fMethod.load()->fMethod,
          call->fCallee == kHost ? nullptr : call->fCallee,
          ThreadNumber(),
          withStack ? CaptureStack(call->fReturnAddress) : nullptr};
}

}  // namespace KAPHost
