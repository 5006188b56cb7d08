#include "kap/LazyTerminate.h"

namespace KAP_T_MT {

// Constant-initialised: members are static objects of several files and may be constructed before
// this one's.
constinit LazyTerminate* LazyTerminate::fList = nullptr;
constinit LazyTerminate* LazyTerminate::fTail = nullptr;

LazyTerminate::LazyTerminate() noexcept : fPrevious(fTail) {
  (fTail ? fTail->fNext : fList) = this;
  fTail = this;
}

LazyTerminate::~LazyTerminate() {
  (fPrevious ? fPrevious->fNext : fList) = fNext;
  (fNext ? fNext->fPrevious : fTail) = fPrevious;
}

bool LazyTerminate::InitializeAll() {
  for (LazyTerminate* member = fList; member; member = member->fNext) {
    bool initialized = false;
    try {
      initialized = member->Initialize();
    } catch (...) {  // a member that throws has failed: the caller learns it from the result
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
