// SPDX-License-Identifier: MIT
#include "kap/KAPError.h"

#include <cstring>
#include <new>

#include "kap/KAPErrorInterface.h"
#include "kap/KAPProcTable.h"
#include "kap/KAPStringInterface.h"
#include "source/kap/KAPBinding.h"

namespace KAP_T_MT {

using Errors = TKAPProcTable<KAPErrorInterface>;
// Plain calls instead of CKAPStringAtom, which throws CKAPError and so is built on this file.
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

// The text of an atom, whose reference is released: the error itself keeps the text alive.
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

// After the binding neither AddRef nor Release does anything, so a copy may share the handle. While
// the runtime is bound but the host has lost AddRef, Release still works, and an uncounted copy
// would release too much: the copy is the empty error.
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

// A fixed text when the host has lost its procedures: reporting a failure must not fail.
const char* CKAPError::what() const noexcept {
  if (!fError) return "Invalid CKAPError";
  return CanAsk() ? TextOf(Errors::CallLoaded<"GetErrorMessage">(fError)) : kUnknownText;
}

const char* CKAPError::Component() const noexcept {
  if (!fError) return "";
  return CanAsk() ? TextOf(Errors::CallLoaded<"GetComponent">(fError)) : nullptr;
}

long CKAPError::Code() const noexcept {
  return fError && CanAsk() ? Errors::CallLoaded<"GetID">(fError) : 0;
}

void* CKAPError::ClientData() const noexcept {
  return fError && CanAsk() ? Errors::CallLoaded<"GetErrorInfo">(fError) : nullptr;
}

bool CKAPError::Matches(const char* component, long code) const {
  if (!component) return false;
  if (!fError) return *component == '\0' && code == 0;
  if (!CanAsk()) {
    KAPThrowLoadFailure(gFinishedInit ? KAPLoadOutcome::kMissingProcedure
                                      : KAPLoadOutcome::kUnavailable);
  }
  const char* own = Component();
  return own && std::strcmp(own, component) == 0 && Code() == code;
}

void CKAPError::ThrowError(const char* message, const char* component, long code, void* clientData,
                           KAPDeleteProc freeClientData) {
  throw CKAPError(message, component, code, clientData, freeClientData);
}

void CKAPError::ThrowError(TOQErrorID id) { throw CKAPError(id); }

// A core error is never destroyed, so a reference that cannot be counted is as good as one that
// can.
KAPError* CKAPError::Shared(KAPError* error) noexcept {
  return Errors::TryRefresh() ? AddRef(error) : error;
}

KAPError* CKAPError::ForCaller() noexcept {
  try {
    throw;  // to look at the exception being handled
  } catch (const std::exception& exception) {
    if (KAPError* error = Create(exception)) return error;
    // The host made no error. It is out of memory, unless the exception was the empty error.
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
  const CKAPError unknown(std::exchange(fUnknownError, nullptr), KAPAdopt());
  const CKAPError mem(std::exchange(fMemError, nullptr), KAPAdopt());
}

void CKAPError::Kill() noexcept {
  fUnknownError = nullptr;
  fMemError = nullptr;
}

void KAPThrowError(KAPError* error) { throw CKAPError(error, KAPAdopt()); }

void KAPThrowMissingInterfaceError() { CKAPError::ThrowError("Missing Interface", "KAP", 0); }

void KAPThrowLoadFailure(KAPLoadOutcome outcome) {
  if (outcome == KAPLoadOutcome::kMissingProcedure) CKAPError::ThrowError("", "KAP", 0);
  KAPThrowMissingInterfaceError();
}

}  // namespace KAP_T_MT
