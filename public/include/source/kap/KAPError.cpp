#include "kap/KAPError.h"

#include <cstring>
#include <new>

#include "kap/KAPErrorInterface.h"
#include "kap/KAPProcTable.h"
#include "kap/KAPStringInterface.h"

namespace KAP_T_MT {

using Errors = TKAPProcTable<KAPErrorInterface>;
// Plain calls instead of CKAPStringAtom, which throws CKAPErrors and so stands above this file.
using Strings = TKAPProcTable<KAPStringInterface>;

constinit KAPError* CKAPError::fUnknownError = nullptr;
constinit KAPError* CKAPError::fMemError = nullptr;

namespace {

constexpr const char* kUnknownText = "unknown KAP error";

KAPError* CoreError(TOQErrorID id) noexcept {
  return Errors::TryRefresh() ? Errors::CallLoaded<"GetCoreError">(id) : nullptr;
}

KAPError* NewError(const char* message, const char* component, long code, void* clientData,
                   KAPDeleteProc freeClientData) noexcept {
  if (!Errors::TryRefresh()) return nullptr;
  return Errors::CallLoaded<"NewError">(message, component, code, clientData, freeClientData);
}

// The text of an atom, whose reference is given back. The error itself keeps the text alive.
const char* TextOf(KAPStringAtom* atom) noexcept {
  if (!atom) return nullptr;
  const char* text = Strings::CallLoaded<"GetCString">(atom);
  Strings::CallReleasing<"DeleteStringAtom">(atom);
  return text;
}

bool CanAsk() noexcept { return Errors::TryRefresh() && Strings::TryRefresh(); }

}  // namespace

CKAPError::CKAPError(TOQErrorID id) noexcept : fError(CoreError(id)) {}

CKAPError::CKAPError(const char* message, const char* component, long code, void* clientData,
                     KAPDeleteProc freeClientData) noexcept
    : fError(NewError(message, component, code, clientData, freeClientData)) {}

CKAPError::CKAPError(const std::exception& cause) noexcept : fError(Create(cause)) {}

CKAPError::CKAPError(const CKAPError& other) noexcept
    : std::exception(other), fError(AddRef(other.fError)) {}

CKAPError::~CKAPError() {
  if (fError) Errors::CallReleasing<"Release">(fError);
}

// After the binding neither AddRef nor Release does anything, so a copy may share the handle. A bound
// host that has lost AddRef still releases: then only the empty error is safe.
KAPError* CKAPError::AddRef(KAPError* error) noexcept {
  if (!error || Errors::CallReleasing<"AddRef">(error) || !KAPIsBound()) return error;
  return nullptr;
}

KAPError* CKAPError::Create(const std::exception& cause) noexcept {
  if (const auto* error = dynamic_cast<const CKAPError*>(&cause)) return AddRef(error->fError);
  if (dynamic_cast<const std::bad_alloc*>(&cause)) return CoreError(kMemErrorID);
  const char* text = cause.what();
  return NewError(text ? text : kUnknownText, "TOQ", 0, nullptr, nullptr);
}

// A report must survive a host that has lost its string procedures, hence the fixed text.
const char* CKAPError::what() const noexcept {
  if (!fError) return "Invalid CKAPError";
  return CanAsk() ? TextOf(Errors::CallLoaded<"GetErrorMessage">(fError)) : kUnknownText;
}

bool CKAPError::Matches(const char* component, long code) const {
  if (!fError) return *component == '\0' && code == 0;
  if (!CanAsk()) {
    KAPThrowLoadFailure(KAPIsBound() ? KAPLoadOutcome::kMissingProcedure
                                     : KAPLoadOutcome::kUnavailable);
  }
  const char* own = TextOf(Errors::CallLoaded<"GetComponent">(fError));
  return own && std::strcmp(own, component) == 0 && Errors::CallLoaded<"GetID">(fError) == code;
}

void CKAPError::ThrowError(const char* message, const char* component, long code, void* clientData,
                           KAPDeleteProc freeClientData) {
  throw CKAPError(message, component, code, clientData, freeClientData);
}

void CKAPError::ThrowError(TOQErrorID id) { throw CKAPError(id); }

// A shared error is never destroyed, so one whose references cannot be counted any more serves as
// well.
KAPError* CKAPError::Shared(KAPError* error) noexcept {
  return Errors::TryRefresh() ? AddRef(error) : error;
}

KAPError* CKAPError::ForCaller() noexcept {
  try {
    throw;  // the only way to look at the exception being handled
  } catch (const std::exception& exception) {
    if (KAPError* error = Create(exception)) return error;
    // The host made no error: it has no memory for one, unless there was none to begin with.
    const bool isEmpty = dynamic_cast<const CKAPError*>(&exception) != nullptr;
    return Shared(!isEmpty && fMemError ? fMemError : fUnknownError);
  } catch (...) {
    return Shared(fUnknownError);
  }
}

bool CKAPError::Init() {
  if (!Errors::TryRefresh()) return false;
  Close();
  fUnknownError = AddRef(CoreError(kUnknownErrorID));
  fMemError = AddRef(CoreError(kMemErrorID));
  return fUnknownError != nullptr;
}

void CKAPError::Close() noexcept {
  const CKAPError unknown(std::exchange(fUnknownError, nullptr));
  const CKAPError mem(std::exchange(fMemError, nullptr));
}

void CKAPError::Kill() noexcept {
  fUnknownError = nullptr;
  fMemError = nullptr;
}

void KAPThrowError(KAPError* error) { throw CKAPError(error); }

void KAPThrowMissingInterfaceError() { CKAPError::ThrowError("Missing Interface", "KAP", 0); }

void KAPThrowLoadFailure(KAPLoadOutcome outcome) {
  if (outcome == KAPLoadOutcome::kMissingProcedure) CKAPError::ThrowError("", "KAP", 0);
  KAPThrowMissingInterfaceError();
}

}  // namespace KAP_T_MT
