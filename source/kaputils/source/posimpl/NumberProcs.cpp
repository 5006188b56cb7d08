// The procedures of "POSNumberInterface".

#include "Number.h"
#include "POSDictImpl.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"

namespace NPOSObjectImpl {

using KAP_T_MT::KAPReportingError;

namespace {

POSNumber* POSNumberNewPOSNumberProc(double value) noexcept {
  return KAPReportingError([=] { return Number::NewContainer(value); });
}

bool POSNumberIsPOSNumberProc(POSObject* object) noexcept {
  return Number::GetInstanceNoThrow(object) != nullptr;
}

double POSNumberGetProc(POSNumber* number) noexcept {
  return KAPReportingError([=] { return Number::GetInstance(number).Get(); });
}

}  // namespace

bool RegisterNumberProcs() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSNumberInterface>(
      &POSNumberNewPOSNumberProc, &POSNumberIsPOSNumberProc, &POSNumberGetProc);
}

}  // namespace NPOSObjectImpl
