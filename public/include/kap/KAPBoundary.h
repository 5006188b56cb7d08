// SPDX-License-Identifier: MIT
#pragma once

#include <type_traits>
#include <utility>

#include "kap/KAPTypes.h"

// The boundary convention: no exception leaves a procedure that a component registers with the
// binder. A registered procedure is one call of one of these helpers; the type of its result
// decides which:
//
//   KAPError* TotalsStoreProc(KAPStringAtom* path) noexcept {  // returns null or an error
//     return KAPReturningError([&] { Store(CKAPStringAtom(path)); });
//   }
//
//   double TotalsSumProc(POSArray* numbers) noexcept {         // reports the failure, returns 0
//     return KAPReportingError([&] { return SumOf(numbers); });
//   }
//
// Registering a procedure that is not `noexcept` does not compile (KAPRegisterInterface).
//
// All exception handling of the boundary is here. The procedures by which the host calls a
// component's own streams and sinks have a variant of the first form (KAPClientProcs.h).
//
// Ownership: a returned error is a new reference for the caller.
// Threads: any.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Reports the what() of the exception being handled to the binder; "unknown KAP error" when it has
// none. Call only in a catch handler.
void KAPReportCurrentException() noexcept;

// The error of the exception being handled: a new reference for the caller; see
// CKAPError::ForCaller. Call only in a catch handler.
[[nodiscard]] KAPError* KAPCurrentExceptionAsError() noexcept;

// For procedures that return an error: null on success, else a reference for the caller. The body
// returns nothing.
template <class Body>
[[nodiscard]] KAPError* KAPReturningError(Body&& body) noexcept {
  static_assert(std::is_void_v<std::invoke_result_t<Body>>,
                "the body's result would be lost: pass an error to KAPCheck, and store a value");
  try {
    std::forward<Body>(body)();
    return nullptr;
  } catch (...) {
    return KAPCurrentExceptionAsError();
  }
}

// For all other procedures: returns the body's result; on failure reports to the binder and returns
// `failure`.
template <class Body, class Result = std::invoke_result_t<Body>>
Result KAPReportingError(Body&& body, std::type_identity_t<Result> failure) noexcept {
  static_assert(!std::is_same_v<Result, KAPError*>,
                "a procedure that returns an error needs KAPReturningError");
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    KAPReportCurrentException();
    return failure;
  }
}

// The same with the zero of the type (null, false, 0, nothing) as the result of a failure.
template <class Body>
std::invoke_result_t<Body> KAPReportingError(Body&& body) noexcept {
  static_assert(!std::is_same_v<std::invoke_result_t<Body>, KAPError*>,
                "null would be a success: a procedure that returns an error needs "
                "KAPReturningError");
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    KAPReportCurrentException();
    return std::invoke_result_t<Body>();
  }
}

}  // namespace KAP_T_MT
