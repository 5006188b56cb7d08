// SPDX-License-Identifier: MIT
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
    } catch (...) {  // failed; the result shows it
    }
    if (!initialized) {
      TerminateBefore(member);
      return false;
    }
  }
  return true;
}

// Those that join with their first use of the host go last: the others may use them once more.
void LazyTerminate::TerminateAll() {
  for (const bool joinsLater : {false, true}) {
    for (LazyTerminate* member = fList; member; member = member->fNext) {
      if (member->fJoinsLater == joinsLater) member->Terminate();
    }
  }
}

// The failure to initialise is the one that counts: what a member throws now changes nothing.
void LazyTerminate::TerminateBefore(const LazyTerminate* end) noexcept {
  for (LazyTerminate* member = fList; member != end; member = member->fNext) {
    try {
      member->Terminate();
    } catch (...) {
    }
  }
}

void LazyTerminate::KillAll() noexcept {
  for (LazyTerminate* member = fList; member; member = member->fNext) member->Kill();
}

}  // namespace KAP_T_MT
