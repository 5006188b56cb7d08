// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>
#include <new>

#include "binder/Failures.h"
#include "kap/KAPTypes.h"
#include "quarantine/Quarantine.h"

namespace KAPHost {

// Errors that the host makes: one reference for the caller. Without memory for one, the core memory
// error.
KAPError* MakeError(const char* message, long code = 0) noexcept;
KAPError* InvalidContainer() noexcept;
// `cannot write "path": No space left on device`, with the system's error number as its code.
KAPError* SystemError(const char* action, const char* path, int number) noexcept;

// Calls a procedure of a component. The reference to the error that it returns is the host's then,
// until the host returns it to a component or reports it.
template <class... Params, class... Args>
KAPError* CallComponent(KAPError* (*proc)(Params...), Args... args) noexcept {
  KAPError* const error = proc(args...);
  if (error && IsFollowing()) NoteHostTook(*error, reinterpret_cast<const void*>(proc));
  return error;
}

// Releases an error that has no caller to be returned to, and adds its message to the reports. Null
// is ignored.
void ReportError(KAPError* error) noexcept;

// The message of an error that is alive; "" when it has none.
const char* MessageOf(const KAPError& error) noexcept;

// Whether it is one of the errors that live forever and are not counted.
bool IsCoreError(const KAPError& error) noexcept;

// Guards the list of live errors, for the time of a fork.
std::mutex& ErrorsMutex() noexcept;

// Runs `body`; returns what it returns, or the memory error when it throws std::bad_alloc.
template <class Body>
KAPError* ReturnError(Body body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return MemoryError();
  }
}

}  // namespace KAPHost
