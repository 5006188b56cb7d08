// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/base/HoldingObject.h"
#include "posimpl/base/ObjectKind.h"

namespace NPOSObjectImpl {

// A pointer that the library does not follow, and the procedure that releases it. An object
// reference holds another object in this way, so chains of them may be long.
class RawPointer final : public TScalar<RawPointer, HoldingObject> {
 public:
  static constexpr POSType kType = KAP_T_MT::kPOSRawPointer;
  static constexpr const char* kNotInstance = "instance was not an POSRawPointer";

  ~RawPointer() override {
    if (fOwned && fRelease) CallReleaseProc(fRelease, fPointer);
  }

  // Until there is a container, the pointer is the caller's, and nothing is released.
  static POSObject* NewContainer(void* pointer, KAP_T_MT::POSReleaseProc release) {
    std::unique_ptr<RawPointer> object(new RawPointer(pointer, release));
    RawPointer& made = *object;
    POSObject* handle = Contain(std::move(object));
    made.fOwned = true;
    return handle;
  }

  // Without a release procedure nothing runs that could release further objects.
  KAPDeleteProc GetDeleteProc() const noexcept override {
    return fRelease ? &HoldingObject::Delete<RawPointer> : &BaseObject::Delete<RawPointer>;
  }

  void* GetRawPointer() const noexcept { return fPointer; }
  KAP_T_MT::POSReleaseProc GetReleaseProc() const noexcept { return fRelease; }
  bool EqualsSame(const RawPointer& other) const noexcept { return fPointer == other.fPointer; }

 private:
  RawPointer(void* pointer, KAP_T_MT::POSReleaseProc release) noexcept
      : fPointer(pointer), fRelease(release) {}

  void* const fPointer;
  const KAP_T_MT::POSReleaseProc fRelease;
  bool fOwned = false;
};

}  // namespace NPOSObjectImpl
