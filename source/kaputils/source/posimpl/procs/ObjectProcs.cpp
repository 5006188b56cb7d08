// SPDX-License-Identifier: MIT

// The procedures of "POSObjectInterface" and "POSObjectStatics".

#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "posimpl/base/BaseObject.h"
#include "posimpl/base/Walk.h"
#include "posimpl/notation/TextReader.h"
#include "posimpl/procs/POSDictImpl.h"

namespace NPOSObjectImpl {

using KAP_T_MT::KAPReportingError;

namespace {

// An element that cannot be cloned is reported with its cause, once however deep it is, and then as
// the failure of the whole.
BaseObject* Clone(BaseObject& original, Walk& walk) {
  try {
    return original.Clone(walk);
  } catch (...) {
    if (!walk.IsInElement()) throw;
    KAP_T_MT::KAPReportCurrentException();
  }
  throw POSException("CPOSObject::Clone failed");
}

POSObject* POSObjectCloneProc(POSObject* object) noexcept {
  return KAPReportingError([=]() -> POSObject* {
    BaseObject& original = BaseObject::GetInstance(object);
    BaseObject* clone = Walk::Run([&](Walk& walk) { return Clone(original, walk); });
    // For an object that is its own clone the result is the handle passed in, deliberately without
    // a reference.
    return clone == &original ? object : BaseObject::Contain(std::unique_ptr<BaseObject>(clone));
  });
}

bool POSObjectIsEqualProc(POSObject* object, POSObject* other) noexcept {
  return KAPReportingError([=] {
    const BaseObject& self = BaseObject::GetInstance(object);
    const BaseObject* same = BaseObject::GetInstanceNoThrow(other);
    return same && Walk::Run([&](Walk& walk) { return self.IsEqual(*same, walk); });
  });
}

int POSObjectGetTypeProc(POSObject* object) noexcept {
  return KAPReportingError([=] { return BaseObject::GetInstance(object).GetType(); });
}

void POSObjectDebugDumpWithHeaderProc(POSObject* object, const char* header) noexcept {
  KAPReportingError([=] { BaseObject::DebugDump(CPOSObject(object), header); });
}

void POSObjectDebugDumpProc(POSObject* object) noexcept {
  POSObjectDebugDumpWithHeaderProc(object, nullptr);
}

void POSObjectDebugDumpRewindProc(POSObject* object, const char* header) noexcept {
  KAPReportingError([=] { BaseObject::DebugDumpRewind(CPOSObject(object), header); });
}

POSObject* POSObjectCreateFromTextProc(const char* text, const char** end) noexcept {
  return KAPReportingError([=] { return CreateFromText(text, end).Detach(); });
}

}  // namespace

template <>
bool RegisterProcs<KAP_T_MT::POSObjectInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSObjectInterface>(
      &POSObjectCloneProc, &POSObjectIsEqualProc, &POSObjectGetTypeProc);
}

template <>
bool RegisterProcs<KAP_T_MT::POSObjectStatics>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSObjectStatics>(
      &POSObjectDebugDumpProc, &POSObjectDebugDumpWithHeaderProc, &POSObjectDebugDumpRewindProc,
      &POSObjectCreateFromTextProc);
}

}  // namespace NPOSObjectImpl
