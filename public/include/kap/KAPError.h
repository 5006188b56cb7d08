// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>
#include <exception>
#include <utility>

#include "kap/KAPAdopt.h"
#include "kap/KAPBinder.h"
#include "kap/KAPTypes.h"

// Host errors as exceptions. Within a component a failure travels as an exception; across the
// binder it travels as a reference to a host error or as a reported message (KAPBoundary.h).
//
//   KAPCheck(StreamFactory::Call<"NewPositionableMemoryStream">(&stream));  // throws the error
//   CKAPError::ThrowError("no such key", "Totals", 3);                       // throws a new one
//
//   try {
//     Load(path);
//   } catch (const CKAPError& error) {
//     if (!error.Matches("Totals", 3)) throw;
//     Log(error.Component(), error.Code(), error.what());
//   }

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using TOQErrorID = int;                           // identifies a core error, which every host has
inline constexpr TOQErrorID kUnknownErrorID = 0;  // an unknown failure
inline constexpr TOQErrorID kMemErrorID = 1;      // exhausted memory

// A reference to a host error, or the empty error, which refers to none. Thrown by value, caught by
// reference.
// Ownership: holds one reference, released on destruction.
// Errors: construction never throws. When no host is bound or the host cannot make the error, the
//   result is the empty error: an error is made while something else has failed already, and a
//   second exception would hide the first.
// Threads: a plain value: one thread at a time per object, any number of objects per host error.
class CKAPError : public std::exception {
 public:
  // The empty error.
  CKAPError() noexcept = default;
  // A core error of the host.
  explicit CKAPError(TOQErrorID id) noexcept;
  template <std::same_as<bool> NotAnID>
  explicit CKAPError(NotAnID) = delete;
  // A new error; the host copies both strings. When the last reference is released, the host passes
  // `clientData` to `freeClientData`. When the host makes no error, the data stays the caller's.
  CKAPError(const char* message, const char* component, long code, void* clientData = nullptr,
            KAPDeleteProc freeClientData = nullptr) noexcept;
  // Adopts the reference, deliberately unlike other classes: an error that a procedure returned is
  // the common case. CKAPError(other.Handle()) compiles and releases one reference twice, so pass a
  // tag that states which of the two is meant.
  KAP_DEPRECATED("use CKAPError(error, KAPAdopt()) or CKAPError(error, KAPShare())")
  explicit CKAPError(KAPError* adopted) noexcept : fError(adopted) {}
  CKAPError(KAPError* error, KAPAdopt) noexcept : fError(error) {}
  // Adds a reference. The empty error when the host has lost the procedure for it.
  CKAPError(KAPError* error, KAPShare) noexcept : fError(AddRef(error)) {}
  // The error of a CKAPError, the memory error for std::bad_alloc, else a new error with the
  // exception's text, component "TOQ" and code 0.
  explicit CKAPError(const std::exception& cause) noexcept;
  CKAPError(const CKAPError& other) noexcept;
  CKAPError(CKAPError&& other) noexcept : fError(std::exchange(other.fError, nullptr)) {}
  CKAPError& operator=(CKAPError other) noexcept {
    std::swap(fError, other.fError);
    return *this;
  }
  ~CKAPError() override;

  // As the constructor from an exception, but returns the new reference. Null for the empty error,
  // or when the host makes none.
  [[nodiscard]] static KAPError* Create(const std::exception& cause) noexcept;

  // The message, borrowed: it lives as long as the host error. "Invalid CKAPError" for the empty
  // error; "unknown KAP error" when the host has lost the procedures that return the message; null
  // for an error without a message.
  const char* what() const noexcept override;

  // The component, borrowed: it lives as long as the host error. "" for the empty error; null for
  // an error without a component.
  const char* Component() const noexcept;
  // The code; 0 for the empty error.
  long Code() const noexcept;
  // The client data, borrowed: it lives as long as the host error. Null when there is none.
  // When the host has lost the procedures for it, these three return null and 0.
  void* ClientData() const noexcept;

  // Whether the error has this component (byte by byte, not null) and this code. The empty error
  // has component "" and code 0; an error whose component is null matches nothing, and nothing
  // matches a null component. When the host has lost the procedures to ask for them, throws as a
  // stale table does (KAPInterfaceClient.h).
  bool Matches(const char* component, long code) const;

  KAPError* Handle() const noexcept { return fError; }  // borrowed
  // Passes the reference to the caller; the error is empty afterwards.
  [[nodiscard]] KAPError* Detach() noexcept { return std::exchange(fError, nullptr); }

  // Throw a new error, or a core error; arguments as for the constructors.
  [[noreturn]] static void ThrowError(const char* message, const char* component, long code,
                                      void* clientData = nullptr,
                                      KAPDeleteProc freeClientData = nullptr);
  [[noreturn]] static void ThrowError(TOQErrorID id);

  // The error of the exception being handled, as a reference that a procedure can return: the error
  // made from it or, when the host makes none, one of the two shared errors. Never null while the
  // runtime is bound, so that no failure looks like success. Call only in a catch handler.
  [[nodiscard]] static KAPError* ForCaller() noexcept;

  // For KAPClient: fetches the shared errors from the host (false when it has none), releases them,
  // forgets them without calling the host. [binding thread]
  static bool Init();
  static void Close() noexcept;
  static void Kill() noexcept;

 private:
  static KAPError* AddRef(KAPError* error) noexcept;
  static KAPError* Shared(KAPError* error) noexcept;

  // Fetched while binding, since nothing can be fetched when they are needed.
  static constinit KAPError* fUnknownError;  // stands for an exception of unknown type
  static constinit KAPError* fMemError;      // stands for exhausted memory

  KAPError* fError = nullptr;
};

// Throws a CKAPError that adopts the reference.
[[noreturn]] void KAPThrowError(KAPError* error);

// Throws the error that a host procedure returned, if any. Adopts the reference.
inline void KAPCheck(KAPError* error) {
  if (error) [[unlikely]]
    KAPThrowError(error);
}

// Throws CKAPError "Missing Interface", component "KAP", code 0.
[[noreturn]] void KAPThrowMissingInterfaceError();

// Throws the error for a table that could not be loaded (`outcome` is not kLoaded); see
// KAPInterfaceClient.h.
[[noreturn]] void KAPThrowLoadFailure(KAPLoadOutcome outcome);

}  // namespace KAP_T_MT
