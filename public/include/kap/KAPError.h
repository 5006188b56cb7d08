#pragma once

#include <exception>
#include <utility>

#include "kap/KAPBinder.h"
#include "kap/KAPTypes.h"

// Host errors as exceptions. Within a component failures travel as exceptions; across the binder
// they travel as references to host errors or as reported messages (KAPBoundary.h).
//
//   KAPCheck(Streams::Call<"Rewind">(stream));     // throws what the host returned
//   CKAPError::ThrowError("no such key", "Totals", 3);

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using TOQErrorID = int;  // a core error of the host
inline constexpr TOQErrorID kUnknownErrorID = 0;
inline constexpr TOQErrorID kMemErrorID = 1;

// A reference to a host error, thrown by value and caught by reference; or the empty error.
// Ownership: holds one reference, released on destruction.
// Errors: making one never throws. When the host cannot make the error, the result is the empty
//   error: an error is made while another failure is under way, and a third would hide it.
// Threads: as a plain value.
class CKAPError : public std::exception {
 public:
  CKAPError() noexcept = default;
  explicit CKAPError(TOQErrorID id) noexcept;
  // At the error's end the host hands `clientData` to `freeClientData`. When the host makes no error
  // the data stays the caller's.
  CKAPError(const char* message, const char* component, long code, void* clientData = nullptr,
            KAPDeleteProc freeClientData = nullptr) noexcept;
  // Adopts the reference.
  explicit CKAPError(KAPError* adopted) noexcept : fError(adopted) {}
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

  // As the constructor from an exception, but the new reference is the caller's.
  static KAPError* Create(const std::exception& cause) noexcept;

  // The message, which lives as long as the error. "Invalid CKAPError" for the empty error,
  // "unknown KAP error" when the host has lost the procedures to ask for it, null when the error has
  // no message.
  const char* what() const noexcept override;

  // Whether the component's text (not null) and the code are these. The empty error has component ""
  // and code 0. Throws when the host has lost the procedures to ask for them.
  bool Matches(const char* component, long code) const;

  KAPError* Handle() const noexcept { return fError; }  // borrowed
  // The reference passes to the caller.
  KAPError* Detach() noexcept { return std::exchange(fError, nullptr); }

  [[noreturn]] static void ThrowError(const char* message, const char* component, long code,
                                      void* clientData = nullptr,
                                      KAPDeleteProc freeClientData = nullptr);
  [[noreturn]] static void ThrowError(TOQErrorID id);

  // The reference that a procedure returns for the exception being handled: its error, else a shared
  // one. Never null while the runtime is bound.
  static KAPError* ForCaller() noexcept;

  // For KAPClient: takes the shared errors from the host (false when it has none), releases them,
  // forgets them.
  static bool Init();
  static void Close() noexcept;
  static void Kill() noexcept;

 private:
  static KAPError* AddRef(KAPError* error) noexcept;
  static KAPError* Shared(KAPError* error) noexcept;

  static constinit KAPError* fUnknownError;  // for an exception of unknown type
  static constinit KAPError* fMemError;      // for exhausted memory

  KAPError* fError = nullptr;
};

// Throws a CKAPError that adopts the reference.
[[noreturn]] void KAPThrowError(KAPError* error);

// Throws what a host procedure returned, if it returned an error.
inline void KAPCheck(KAPError* error) {
  if (error) [[unlikely]]
    KAPThrowError(error);
}

// Throws CKAPError "Missing Interface", component "KAP", code 0.
[[noreturn]] void KAPThrowMissingInterfaceError();

// Throws what a table that could not be loaded throws; see KAPInterfaceClient.h.
[[noreturn]] void KAPThrowLoadFailure(KAPLoadOutcome outcome);

}  // namespace KAP_T_MT
