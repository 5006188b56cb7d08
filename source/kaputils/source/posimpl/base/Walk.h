// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/base/BaseObject.h"
#include "posimpl/base/NestingGuard.h"

namespace NPOSObjectImpl {

// A walk of "Clone" or "IsEqual" through nested objects.
//
// The procedures of another component's object may change what holds it, at any level. Before such
// a procedure runs, each object on the way to it must have a reference of its own. That is two host
// calls for each object: too many for the ordinary walk, which meets no such object. So there are
// two walks. The first one calls no procedure of another component: where it should, it stops, and
// its result is discarded. Then the second one begins at the top and keeps what it walks through.
class Walk {
 public:
  // The result of `body`, called with the first walk and, if that one stops, with the second.
  template <class Body>
  static auto Run(Body body) {
    NestingStack& stack = NestingStack::OnThisThread();
    Walk first(stack, KAPUtilsAtoms::Get().POSObjectImpl.Text());
    auto result = body(first);
    if (!first.fStopped) [[likely]]
      return result;
    Walk second(stack, kKeeps);
    return body(second);
  }

  NestingStack& Stack() const noexcept { return fStack; }

  // A container that is cloned calls Enter at its begin and Leave at its end. One that fails does
  // not leave, so afterwards IsInElement says whether it was inside another one.
  void Enter() noexcept { ++fDepth; }
  void Leave() noexcept { --fDepth; }
  bool IsInElement() const noexcept { return fDepth > 1; }

  bool Keeps() const noexcept { return fSignature == kKeeps; }
  void Stop() noexcept { fStopped = true; }
  bool Stopped() const noexcept { return fStopped; }

  // The object of ours that a handle stands for, when it is called without being kept; null for any
  // other handle, and for each in a walk that keeps. One test thus separates the ordinary case.
  BaseObject* Unkept(const POSObject* held) const noexcept {
    return held ? static_cast<BaseObject*>(
                      KAP_T_MT::CKAPContainer::PrimaryInstance(held, fSignature))
                : nullptr;
  }

 private:
  Walk(NestingStack& stack, const char* signature) noexcept
      : fStack(stack), fSignature(signature) {}

  static constexpr char kKeeps[] = "";  // its address is the signature of no container

  NestingStack& fStack;
  const char* const fSignature;  // of the objects that are called without being kept
  unsigned fDepth = 0;
  bool fStopped = false;
};

}  // namespace NPOSObjectImpl
