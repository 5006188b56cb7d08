#include "kap/LazyTerminate.h"

#include <mutex>
#include <utility>

namespace KAP_T_MT {

// Initialised at compile time: members are static objects of other files and may be constructed
// before the static objects of this one.
constinit LazyTerminate* LazyTerminate::fList = nullptr;
constinit LazyTerminate* LazyTerminate::fTail = nullptr;

namespace {

// Guards the list: method-table lists join on the thread that first uses them.
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
    } catch (...) {  // failed; the result tells
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
