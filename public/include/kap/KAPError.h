#pragma once

#include <exception>
#include <utility>

#include "kap/KAPTypes.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using TOQErrorID = int;  // a core error of the host
inline constexpr TOQErrorID kUnknownErrorID = 0;
inline constexpr TOQErrorID kMemErrorID = 1;

// A host error as an exception: thrown by value, caught by reference.
// Ownership: holds one reference to its handle, or null, and releases it on destruction.
// Errors: building one never throws; when the host cannot make the error the handle is null.
// Threads: as a plain value.
class CKAPError : public std::exception {
 public:
  CKAPError() noexcept = default;
  explicit CKAPError(TOQErrorID id) noexcept;
  // The host frees `clientData` with `freeClientData` when the error goes; when it makes no error
  // the data stays the caller's.
  CKAPError(const char* message, const char* component, long code, void* clientData = nullptr,
            KAPDeleteProc freeClientData = nullptr) noexcept;
  explicit CKAPError(KAPError* adopted) noexcept : fError(adopted) {}
  // The error of a CKAPError, the memory error for std::bad_alloc, else a new one with the text and
  // component "TOQ".
  explicit CKAPError(const std::exception& cause) noexcept;
  CKAPError(const CKAPError& other) noexcept;
  CKAPError(CKAPError&& other) noexcept : fError(std::exchange(other.fError, nullptr)) {}
  CKAPError& operator=(CKAPError other) noexcept {
    std::swap(fError, other.fError);
    return *this;
  }
  ~CKAPError() override;

  // As the constructor from an exception; the new reference is the caller's.
  static KAPError* Create(const std::exception& cause) noexcept;

  // The error's message, which lives as long as the error; "Invalid CKAPError" for the empty one,
  // null when the host gives none. A failure inside ends the process.
  const char* what() const noexcept override;

  // Whether the component's text (not null) and the code are these. The empty error has the
  // component "" and code 0.
  bool Matches(const char* component, long code) const;

  KAPError* Handle() const noexcept { return fError; }  // borrowed
  KAPError* Detach() noexcept { return std::exchange(fError, nullptr); }

  [[noreturn]] static void ThrowError(const char* message, const char* component, long code,
                                      void* clientData = nullptr,
                                      KAPDeleteProc freeClientData = nullptr);
  [[noreturn]] static void ThrowError(TOQErrorID id);

  // The reference that a procedure returns for the exception being handled: its error, else a
  // shared one. Never null while the runtime is bound.
  static KAPError* ForCaller() noexcept;

  // Takes hold of the shared errors (false when the host has none), gives them back, forgets them.
  static bool Init();
  static void Close() noexcept;
  static void Kill() noexcept;

  // From now on counting an error's references no longer reaches the host.
  static void StandBy() noexcept;

 private:
  static KAPError* AddRef(KAPError* error) noexcept;
  static KAPError* Shared(KAPError* error) noexcept;

  static constinit KAPError* fUnknownError;  // for an exception of unknown type
  static constinit KAPError* fMemError;      // for exhausted memory

  KAPError* fError = nullptr;
};

// Raises a CKAPError that adopts the reference.
[[noreturn]] void KAPThrowError(KAPError* error);

// Raises what a host procedure returned, if it returned an error.
inline void KAPCheck(KAPError* error) {
  if (error) [[unlikely]]
    KAPThrowError(error);
}

}  // namespace KAP_T_MT
