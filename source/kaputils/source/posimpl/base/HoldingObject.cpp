// SPDX-License-Identifier: MIT
#include "posimpl/base/HoldingObject.h"

#include <algorithm>
#include <utility>

#include "kap/KAPBoundary.h"
#include "posimpl/base/NestingGuard.h"

namespace NPOSObjectImpl {

// The nested releases of this thread.
class HoldingObject::Releases {
 public:
  static Releases& OnThisThread() noexcept;

  void Delete(HoldingObject* object) noexcept {
    const bool isOwnRelease = std::exchange(fNext, nullptr) == object;
    if (isOwnRelease || fDepth == 0) {
      DeleteNested(object);
    } else {
      RunSeparately([=, this] { DeleteNested(object); });
    }
  }

  // Runs `body` with a release depth of its own, as far as the stack allows. If nothing fits, every
  // object is deferred.
  template <class Body>
  void RunSeparately(Body body) noexcept {
    const NestingLevel level;
    if (level.Fits()) {
      const Releases outside = std::exchange(*this, Releases());
      body();
      *this = outside;  // no object is deferred: the outermost release of `body` has ended
    } else {
      const Releases outside = *this;
      fDepth = fDepthLimit = kMaxDepth;
      body();
      fDepth = outside.fDepth;
      fDepthLimit = outside.fDepthLimit;
    }
  }

  // See ReleaseOfHeld.
  const BaseObject*& Next() noexcept { return fNext; }

 private:
  static constexpr int kMaxDepth = 32;  // so that ordinary objects go in their natural order
  // Few objects are nested deeper, and only these pay for a look at the stack.
  static constexpr int kDepthUnmeasured = 4;
  // Measured: 250 bytes in an optimised build, 600 in one for debugging; sanitizers need more.
  static constexpr unsigned long kStackOfLevel = 2048;

  constexpr Releases() noexcept = default;

  void DeleteNested(HoldingObject* object) noexcept {
    if (fDepth >= fDepthLimit && !RaisesLimit()) {
      object->fNextToDelete = fToDelete;
      fToDelete = object;
      return;
    }
    ++fDepth;
    delete object;
    if (fDepth == 1) {
      DeleteDeferred();
      fDepthLimit = kDepthUnmeasured;
    }
    --fDepth;
  }

  // Measures how many more levels fit, once for each outermost release.
  [[gnu::noinline]] bool RaisesLimit() noexcept {
    if (fDepthLimit != kDepthUnmeasured) return false;
    NestingStack& stack = NestingStack::OnThisThread();
    const NestingLevel level(stack);  // finds the ends of the stack
    const unsigned long levels = stack.HowManyFit(kStackOfLevel);
    fDepthLimit += static_cast<int>(std::min<unsigned long>(levels, kMaxDepth - kDepthUnmeasured));
    return fDepth < fDepthLimit;
  }

  void DeleteDeferred() noexcept {
    while (HoldingObject* object = fToDelete) {
      fToDelete = object->fNextToDelete;
      delete object;
    }
  }

  int fDepthLimit = kDepthUnmeasured;
  int fDepth = 0;
  HoldingObject* fToDelete = nullptr;
  const BaseObject* fNext = nullptr;  // what the destructor at work releases next
};

// Not inline: see build/kaputils/CMakeLists.txt on thread-local variables.
[[gnu::noinline]] HoldingObject::Releases& HoldingObject::Releases::OnThisThread() noexcept {
  static thread_local constinit Releases tReleases;
  return tReleases;
}

void HoldingObject::DeleteOrDefer(HoldingObject* object) noexcept {
  Releases::OnThisThread().Delete(object);
}

const BaseObject*& HoldingObject::ReleaseOfHeld::NextOnThisThread() noexcept {
  return Releases::OnThisThread().Next();
}

// Nothing may be thrown through a release. A procedure that throws, against its contract, is
// reported.
void HoldingObject::CallReleaseProc(KAP_T_MT::POSReleaseProc release, void* pointer) noexcept {
  Releases::OnThisThread().RunSeparately(
      [=] { KAP_T_MT::KAPReportingError([=] { release(pointer); }); });
}

// What Walk::Unkept does not find: null, an object of another component, any object in a walk that
// keeps.
POSObject* HoldingObject::CloneKept(POSObject* held, Walk& walk) {
  if (!held) return nullptr;
  if (!walk.Keeps()) {
    walk.Stop();
    return nullptr;
  }
  const CPOSObject kept = Share(held);
  BaseObject* const own = OwnInstance(held);
  return own ? CloneOwn(*own, held, walk) : kept.Clone().Detach();
}

bool HoldingObject::AreEqualKept(POSObject* a, POSObject* b, Walk& walk) {
  if (!a || !b) return !a && !b;
  const BaseObject* const own = OwnInstance(a);
  if (!own && !walk.Keeps()) {
    walk.Stop();
    return false;
  }
  const CPOSObject kept = Share(a);
  const CPOSObject otherKept = Share(b);
  if (!own) return kept.IsEqual(otherKept);
  const BaseObject* const other = GetInstanceNoThrow(b);
  return other && own->IsEqual(*other, walk);
}

}  // namespace NPOSObjectImpl
