// The procedures of "POSStringInterface".

#include "POSDictImpl.h"
#include "String.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"

namespace NPOSObjectImpl {

using KAP_T_MT::KAPReportingError;

namespace {

POSString* POSStringNewPOSStringProc(const char* text) noexcept {
  return KAPReportingError([=] { return String::NewContainer(text); });
}

bool POSStringIsPOSStringProc(POSObject* object) noexcept {
  return String::GetInstanceNoThrow(object) != nullptr;
}

const char* POSStringGetProc(POSString* string) noexcept {
  return KAPReportingError([=] { return String::GetInstance(string).Get(); });
}

}  // namespace

bool RegisterStringProcs() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSStringInterface>(
      &POSStringNewPOSStringProc, &POSStringIsPOSStringProc, &POSStringGetProc);
}

}  // namespace NPOSObjectImpl
