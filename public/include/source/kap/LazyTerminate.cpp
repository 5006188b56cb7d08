#include "kap/LazyTerminate.h"

#include <mutex>
#include <utility>

namespace KAP_T_MT {

// Initialised at compile time: members are static objects of several files and may be constructed
// before this file's.
constinit LazyTerminate* LazyTerminate::fList = nullptr;
constinit LazyTerminate* LazyTerminate::fTail = nullptr;

namespace {

// Members may join on any thread.
constinit std::mutex gJoining;

}  // namespace

void LazyTerminate::Join() noexcept {
  const std::lock_guard lock(gJoining);
  if (std::exchange(fJoined, true)) return;
  fPrevious = fTail;
  (fTail ? fTail->fNext : fList) = this;
  fTail = this;
}

LazyTerminate::~LazyTerminate() {
  const std::lock_guard lock(gJoining);
  if (!fJoined) return;
  (fPrevious ? fPrevious->fNext : fList) = fNext;
  (fNext ? fNext->fPrevious : fTail) = fPrevious;
}

bool LazyTerminate::InitializeAll() {
  for (LazyTerminate* member = fList; member; member = member->fNext) {
    bool initialized = false;
    try {
      initialized = member->Initialize();
    } catch (...) {  // a member that throws has failed, and the result says so
    }
    if (!initialized) {
      TerminateBefore(member);
      return false;
    }
  }
  return true;
}

void LazyTerminate::TerminateAll() { TerminateBefore(nullptr); }

void LazyTerminate::TerminateBefore(const LazyTerminate* end) {
  for (LazyTerminate* member = fList; member != end; member = member->fNext) member->Terminate();
}

void LazyTerminate::KillAll() noexcept {
  for (LazyTerminate* member = fList; member; member = member->fNext) member->Kill();
}

}  // namespace KAP_T_MT
