#pragma once

#include <type_traits>
#include <utility>

#include "kap/KAPTypes.h"

// The boundary convention: no exception leaves a procedure that a component registers with the
// binder. Every such procedure is one call of one of these two, and the type of its result decides
// which:
//
//   KAPError* RenameProc(...) noexcept {        // returns null or an error for the caller
//     return KAPReturningError([&] { ... });
//   }
//   double SumProc(POSArray* numbers) noexcept {  // reports a failure, and returns zero
//     return KAPReportingError([&] { ...; return sum; });
//   }
//
// The procedures by which the host calls a component's own streams and sinks have a variant of the
// first form (KAPClientProcs.h).
// Threads: any.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Reports the text of the exception being handled; "unknown KAP error" when it has none.
void KAPReportCurrentException() noexcept;

// The error of the exception being handled: a new reference for the caller.
KAPError* KAPCurrentExceptionAsError() noexcept;

// For procedures that return an error: null, or a reference for the caller.
template <class Body>
KAPError* KAPReturningError(Body&& body) noexcept {
  try {
    std::forward<Body>(body)();
    return nullptr;
  } catch (...) {
    return KAPCurrentExceptionAsError();
  }
}

// For all others: a failure is reported to the binder, and `failure` is the result.
template <class Body, class Result = std::invoke_result_t<Body>>
Result KAPReportingError(Body&& body, std::type_identity_t<Result> failure) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    KAPReportCurrentException();
    return failure;
  }
}

// The same with zero (null, false, nothing) as the result of a failure.
template <class Body>
std::invoke_result_t<Body> KAPReportingError(Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    KAPReportCurrentException();
    return std::invoke_result_t<Body>();
  }
}

}  // namespace KAP_T_MT
