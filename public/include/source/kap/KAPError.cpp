#include "kap/KAPError.h"

#include <cstring>
#include <new>

#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "kap/KAPHostInterfaces.h"
#include "kap/KAPProcTable.h"
#include "kap/KAPStringAtom.h"

namespace KAP_T_MT {

using KAPErrorClient = TKAPInterfaceClient<KAPErrorInterface>;

constinit KAPError* CKAPError::fUnknownError = nullptr;
constinit KAPError* CKAPError::fMemError = nullptr;

namespace {

const char* TextOf(const std::exception& exception) noexcept {
  const char* text = exception.what();
  return text ? text : "unknown KAP error";
}

// An error is made while another failure is on its way, so a host without errors gives the empty
// one, not a third.
KAPError* CoreError(TOQErrorID id) noexcept {
  return KAPErrorClient::TryRefresh() ? KAPErrorClient::CallLoaded<"GetCoreError">(id) : nullptr;
}

KAPError* NewError(const char* message, const char* component, long code, void* clientData,
                   KAPDeleteProc freeClientData) noexcept {
  if (!KAPErrorClient::TryRefresh()) return nullptr;
  return KAPErrorClient::CallLoaded<"NewError">(message, component, code, clientData,
                                                freeClientData);
}

}  // namespace

CKAPError::CKAPError(TOQErrorID id) noexcept : fError(CoreError(id)) {}

CKAPError::CKAPError(const char* message, const char* component, long code, void* clientData,
                     KAPDeleteProc freeClientData) noexcept
    : fError(NewError(message, component, code, clientData, freeClientData)) {}

CKAPError::CKAPError(const std::exception& cause) noexcept : fError(Create(cause)) {}

CKAPError::CKAPError(const CKAPError& other) noexcept
    : std::exception(other), fError(AddRef(other.fError)) {}

CKAPError::~CKAPError() {
  if (fError) KAPErrorClient::CallOrStandBy<"Release">(fError);
}

KAPError* CKAPError::AddRef(KAPError* error) noexcept {
  if (error) KAPErrorClient::CallOrStandBy<"AddRef">(error);
  return error;
}

KAPError* CKAPError::Create(const std::exception& cause) noexcept {
  if (const auto* error = dynamic_cast<const CKAPError*>(&cause)) return AddRef(error->fError);
  if (dynamic_cast<const std::bad_alloc*>(&cause)) return CoreError(kMemErrorID);
  return NewError(TextOf(cause), "TOQ", 0, nullptr, nullptr);
}

const char* CKAPError::what() const noexcept {
  if (!fError) return "Invalid CKAPError";
  return CKAPStringAtom(KAPErrorClient::Call<"GetErrorMessage">(fError), true).Text();
}

bool CKAPError::Matches(const char* component, long code) const {
  if (!fError) return *component == '\0' && code == 0;
  const CKAPStringAtom own(KAPErrorClient::Call<"GetComponent">(fError), true);
  return own.Text() && std::strcmp(own.Text(), component) == 0 &&
         KAPErrorClient::Call<"GetID">(fError) == code;
}

void CKAPError::ThrowError(const char* message, const char* component, long code, void* clientData,
                           KAPDeleteProc freeClientData) {
  throw CKAPError(message, component, code, clientData, freeClientData);
}

void CKAPError::ThrowError(TOQErrorID id) { throw CKAPError(id); }

// A shared error is never destroyed, so one that cannot be counted any more will do as well.
KAPError* CKAPError::Shared(KAPError* error) noexcept {
  return KAPErrorClient::TryRefresh() ? AddRef(error) : error;
}

// A rethrow inside: the exception's type decides, and this is the only place that looks at it.
KAPError* CKAPError::ForCaller() noexcept {
  try {
    throw;
  } catch (const std::exception& exception) {
    if (KAPError* error = Create(exception)) return error;
    const bool isEmpty = dynamic_cast<const CKAPError*>(&exception) != nullptr;
    return Shared(!isEmpty && fMemError ? fMemError : fUnknownError);  // no error: no memory for it
  } catch (...) {
    return Shared(fUnknownError);
  }
}

bool CKAPError::Init() {
  if (!KAPErrorClient::TryRefresh()) return false;
  Close();
  fUnknownError = AddRef(CoreError(kUnknownErrorID));
  fMemError = AddRef(CoreError(kMemErrorID));
  return fUnknownError != nullptr;
}

void CKAPError::Close() noexcept {
  CKAPError unknown(std::exchange(fUnknownError, nullptr));
  CKAPError mem(std::exchange(fMemError, nullptr));
}

void CKAPError::Kill() noexcept {
  fUnknownError = nullptr;
  fMemError = nullptr;
}

void CKAPError::StandBy() noexcept {
  constexpr auto noOp = [](KAPError*) { KAPNoOpFunction(); };
  KAPErrorClient::StandBy<"AddRef">(noOp);
  KAPErrorClient::StandBy<"Release">(noOp);
}

void KAPThrowError(KAPError* error) { throw CKAPError(error); }

void KAPReportCurrentException() noexcept {
  try {
    throw;
  } catch (const std::exception& exception) {
    KAPReportError(TextOf(exception));
  } catch (...) {
    KAPReportError("unknown KAP error");
  }
}

KAPError* KAPCurrentExceptionAsError() noexcept { return CKAPError::ForCaller(); }

}  // namespace KAP_T_MT
