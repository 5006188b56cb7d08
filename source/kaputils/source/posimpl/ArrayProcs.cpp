// The procedures of "POSArrayInterface".

#include "Array.h"
#include "POSDictImpl.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"

namespace NPOSObjectImpl {

using KAP_T_MT::KAPReportingError;

namespace {

POSArray* POSArrayNewPOSArrayProc() noexcept {
  return KAPReportingError([] { return Array::NewContainer(); });
}

bool POSArrayIsPOSArrayProc(POSObject* object) noexcept {
  return Array::GetInstanceNoThrow(object) != nullptr;
}

POSObject* POSArrayGetAtProc(POSArray* array, unsigned long index) noexcept {
  return KAPReportingError([=] { return Array::GetInstance(array).GetAt(index).Detach(); });
}

unsigned int POSArrayCountProc(POSArray* array) noexcept {
  return KAPReportingError([=] { return Array::GetInstance(array).Count(); });
}

void POSArraySetAtProc(POSArray* array, unsigned long index, POSObject* object) noexcept {
  KAPReportingError([=] { Array::GetInstance(array).SetAt(index, BaseObject::Reference(object)); });
}

void POSArrayAppendProc(POSArray* array, POSObject* object) noexcept {
  KAPReportingError([=] { Array::GetInstance(array).Append(BaseObject::Reference(object)); });
}

void POSArrayRemoveProc(POSArray* array, unsigned long index) noexcept {
  KAPReportingError([=] { Array::GetInstance(array).Remove(index); });
}

}  // namespace

bool RegisterArrayProcs() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSArrayInterface>(
      &POSArrayNewPOSArrayProc, &POSArrayIsPOSArrayProc, &POSArrayGetAtProc, &POSArrayCountProc,
      &POSArraySetAtProc, &POSArrayAppendProc, &POSArrayRemoveProc);
}

}  // namespace NPOSObjectImpl
