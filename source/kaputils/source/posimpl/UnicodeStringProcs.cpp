// The procedures of "POSUnicodeStringInterface".

#include "POSDictImpl.h"
#include "UnicodeString.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"

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
