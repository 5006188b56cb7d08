// The procedures of "POSRawPointerInterface".

#include "POSDictImpl.h"
#include "RawPointer.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"

namespace NPOSObjectImpl {

using KAP_T_MT::KAPReportingError;

POSObject* RawPointer::NewContainer(void* pointer, KAP_T_MT::POSReleaseProc release) {
  std::unique_ptr<RawPointer> object(new RawPointer(pointer, release));
  RawPointer& made = *object;
  POSObject* handle = Contain(std::move(object));
  made.fOwned = true;
  return handle;
}

namespace {

POSRawPointer* POSRawPointerNewPOSRawPointerProc(void* pointer,
                                                 KAP_T_MT::POSReleaseProc release) noexcept {
  return KAPReportingError([=] { return RawPointer::NewContainer(pointer, release); });
}

bool POSRawPointerIsPOSRawPointerProc(POSObject* object) noexcept {
  return RawPointer::GetInstanceNoThrow(object) != nullptr;
}

void* POSRawPointerGetRawPointerProc(POSRawPointer* pointer) noexcept {
  return KAPReportingError([=] { return RawPointer::GetInstance(pointer).GetRawPointer(); });
}

KAP_T_MT::POSReleaseProc POSRawPointerGetReleaseProcProc(POSRawPointer* pointer) noexcept {
  return KAPReportingError([=] { return RawPointer::GetInstance(pointer).GetReleaseProc(); });
}

}  // namespace

bool RegisterRawPointerProcs() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSRawPointerInterface>(
      &POSRawPointerNewPOSRawPointerProc, &POSRawPointerIsPOSRawPointerProc,
      &POSRawPointerGetRawPointerProc, &POSRawPointerGetReleaseProcProc);
}

}  // namespace NPOSObjectImpl
