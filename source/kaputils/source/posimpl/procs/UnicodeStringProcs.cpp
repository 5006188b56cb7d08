// The procedures of "POSUnicodeStringInterface".

#include "kap/KAPBoundary.h"
#include "kap/KAPRegistration.h"
#include "posimpl/objects/UnicodeString.h"
#include "posimpl/procs/POSDictImpl.h"

namespace NPOSObjectImpl {

using KAP_T_MT::KAPReportingError;

namespace {

POSUnicodeString* POSUnicodeStringNewPOSUnicodeStringProc(const unsigned short* text) noexcept {
  return KAPReportingError([=] { return UnicodeString::NewContainer(text); });
}

bool POSUnicodeStringIsPOSUnicodeStringProc(POSObject* object) noexcept {
  return UnicodeString::GetInstanceNoThrow(object) != nullptr;
}

const unsigned short* POSUnicodeStringGetProc(POSUnicodeString* string) noexcept {
  return KAPReportingError([=] { return UnicodeString::GetInstance(string).Get(); });
}

}  // namespace

bool RegisterUnicodeStringProcs() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSUnicodeStringInterface>(
      &POSUnicodeStringNewPOSUnicodeStringProc, &POSUnicodeStringIsPOSUnicodeStringProc,
      &POSUnicodeStringGetProc);
}

}  // namespace NPOSObjectImpl
