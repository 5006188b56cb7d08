#pragma once

#include <new>

#include "kap/KAPTypes.h"

namespace KAPHost {

// Errors of the host's own making, for the caller. Each is the memory error when there is no memory
// for it.
KAPError* MakeError(const char* message, long code = 0) noexcept;
KAPError* InvalidContainer() noexcept;
KAPError* InvalidArgument() noexcept;
// `cannot write "path": No space left on device`, with the number of the system's error as its
// code.
KAPError* SystemError(const char* action, const char* path, int number) noexcept;

// Core error 1.
KAPError* MemoryError() noexcept;

// Takes an error that no caller is there to be given: its message goes to the reports. Null is
// none.
void ReportError(KAPError* error) noexcept;

// Runs `body`, which may throw std::bad_alloc.
template <class Body>
KAPError* ReturnError(Body body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return MemoryError();
  }
}

}  // namespace KAPHost
