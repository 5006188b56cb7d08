#pragma once

#include <type_traits>
#include <utility>

#include "kap/KAPBoundary.h"
#include "kap/KAPClientBase.h"
#include "kap/KAPError.h"

// The procedures by which the host calls a component's own objects: streams, sinks, filters,
// progress. They follow one pattern, made here from the operation alone: the result place is set to
// 0 or null, the virtual operation is called, its result is stored, and an exception becomes the
// error that is returned. A client object crosses as the address of its CKAPVirtualClientBase.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

inline void* KAPClientAddress(CKAPVirtualClientBase* client) noexcept { return client; }

// The object behind the address; the core unknown error for null.
template <class Client>
Client& KAPClientAt(void* address) {
  if (!address) CKAPError::ThrowError(kUnknownErrorID);
  return *static_cast<Client*>(static_cast<CKAPVirtualClientBase*>(address));
}

// As KAPReturningError, but an empty CKAPError gives null, deliberately: it has no error to hand
// over.
template <class Body>
KAPError* KAPReturningClientError(Body&& body) noexcept {
  try {
    std::forward<Body>(body)();
    return nullptr;
  } catch (const CKAPError& error) {
    return CKAPError(error).Detach();
  } catch (...) {
    return KAPCurrentExceptionAsError();
  }
}

// How the result of an operation crosses: as it is, a new client object as its address.
template <class Result>
struct TKAPClientResult {
  using Place = Result;
  static Place Cross(Result result) { return result; }
};

template <class Client>
struct TKAPClientResult<TKAPClientObject<Client>> {
  using Place = void*;
  static Place Cross(TKAPClientObject<Client> client) {
    if (!client) CKAPError::ThrowError(kUnknownErrorID);
    return KAPClientAddress(client.release());
  }
};

template <auto Operation>
struct TKAPClientProc;

template <class Client, class Result, class... Args, Result (Client::*Operation)(Args...)>
requires(!std::is_void_v<Result>) struct TKAPClientProc<Operation> {
  using Crossing = TKAPClientResult<Result>;
  using Place = typename Crossing::Place;

  static KAPError* Call(Place* out, void* client, Args... args) noexcept {
    return KAPReturningClientError([&] {
      if (!out) CKAPError::ThrowError(kUnknownErrorID);
      *out = Place();
      *out = Crossing::Cross((KAPClientAt<Client>(client).*Operation)(args...));
    });
  }
};

template <class Client, class... Args, void (Client::*Operation)(Args...)>
struct TKAPClientProc<Operation> {
  static KAPError* Call(void* client, Args... args) noexcept {
    return KAPReturningClientError([&] { (KAPClientAt<Client>(client).*Operation)(args...); });
  }
};

// Deletes a client object; what its destructor raises becomes the error.
inline KAPError* KAPDeleteClientProc(void* client) noexcept {
  return KAPReturningClientError([=] { delete static_cast<CKAPVirtualClientBase*>(client); });
}

}  // namespace KAP_T_MT
