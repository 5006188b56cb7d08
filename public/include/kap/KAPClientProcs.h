// SPDX-License-Identifier: MIT
#pragma once

#include <type_traits>
#include <utility>

#include "kap/KAPBoundary.h"
#include "kap/KAPClientBase.h"
#include "kap/KAPError.h"

// The procedures by which the host calls a component's own objects: streams, sinks, filters,
// progress. All follow one pattern, generated from the virtual operation alone:
//
//   constexpr KAPClientReadProc read = &TKAPClientProc<&KAPClientSimpleStream::Read>::Call;
//
//   1. Set the result place, if there is one, to 0 or null.
//   2. Call the operation.
//   3. Store the result and return null, or turn the exception into the error that is returned.
//
// A client object crosses the binder as the address of its CKAPVirtualClientBase, whatever its
// class: the host hands the address back unchanged. Only the runtime itself uses this header.
//
// Threads: as the operation; the procedures have no state.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The address under which a client object crosses.
inline void* KAPClientAddress(CKAPVirtualClientBase* client) noexcept { return client; }

// The client object at the address. Throws the core unknown error for null.
template <class Client>
Client& KAPClientAt(void* address) {
  if (!address) CKAPError::ThrowError(kUnknownErrorID);
  return *static_cast<Client*>(static_cast<CKAPVirtualClientBase*>(address));
}

// As KAPReturningError, except that an empty CKAPError becomes null. Deliberate: it refers to no
// error that could be returned, and a client stream has no other way to fail silently (test:
// ClientTest.FailuresBecomeErrors).
template <class Body>
[[nodiscard]] KAPError* KAPReturningClientError(Body&& body) noexcept {
  static_assert(std::is_void_v<std::invoke_result_t<Body>>, "the body's result would be lost");
  try {
    std::forward<Body>(body)();
    return nullptr;
  } catch (const CKAPError& error) {
    CKAPError copy(error);
    // A host that has lost AddRef makes no copy, and a failure must not look like a success.
    if (error.Handle() && !copy.Handle()) return KAPCurrentExceptionAsError();
    return copy.Detach();
  } catch (...) {
    return KAPCurrentExceptionAsError();
  }
}

// How the result of an operation crosses: `Place` is what a result place holds, and Cross turns the
// result into it. A plain value crosses as it is...
template <class Result>
struct TKAPClientResult {
  // The type of the result place, and the result as it is stored there.
  using Place = Result;
  static Place Cross(Result result) { return result; }
};

// ... and a new client object as its address. None is the core unknown error.
template <class Client>
struct TKAPClientResult<TKAPClientObject<Client>> {
  // The type of the result place, and the result as it is stored there.
  using Place = void*;
  static Place Cross(TKAPClientObject<Client> client) {
    if (!client) CKAPError::ThrowError(kUnknownErrorID);
    return KAPClientAddress(client.release());
  }
};

// The procedure for an operation: one specialisation for operations with a result, one for those
// without. `Call` is the procedure, whose result is null or an error for the host. A null result
// place is the core unknown error.
template <auto Operation>
struct TKAPClientProc;

// Of an operation with a result, which goes to `out`.
template <class Client, class Result, class... Args, Result (Client::*Operation)(Args...)>
requires(!std::is_void_v<Result>) struct TKAPClientProc<Operation> {
  using Crossing = TKAPClientResult<Result>;  // how the result crosses
  // The type of the result place.
  using Place = typename Crossing::Place;

  // The procedure. Null, or a new error reference.
  static KAPError* Call(Place* out, void* client, Args... args) noexcept {
    return KAPReturningClientError([&] {
      if (!out) CKAPError::ThrowError(kUnknownErrorID);
      *out = Place();
      *out = Crossing::Cross((KAPClientAt<Client>(client).*Operation)(args...));
    });
  }
};

// Of an operation without a result.
template <class Client, class... Args, void (Client::*Operation)(Args...)>
struct TKAPClientProc<Operation> {
  // The procedure. Null, or a new error reference.
  static KAPError* Call(void* client, Args... args) noexcept {
    return KAPReturningClientError([&] { (KAPClientAt<Client>(client).*Operation)(args...); });
  }
};

// Deletes a client object; null is ignored. What its destructor throws becomes the error.
inline KAPError* KAPDeleteClientProc(void* client) noexcept {
  return KAPReturningClientError([=] { delete static_cast<CKAPVirtualClientBase*>(client); });
}

}  // namespace KAP_T_MT
