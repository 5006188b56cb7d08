// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

#include "kap/KAPTypes.h"

// Binding the client runtime to a host, and ending the binding: the top of the client runtime.
//
// A program that embeds a host, or a test, holds a KAPClient:
//
//   KAPHost::Host host;
//   const KAP_T_MT::KAPClient client(host.GetProcAddress());
//   const KAP_T_MT::CKAPStringAtom name("Ada");  // objects of the runtime go into its scope
//
// A component calls the functions instead: KAPClientInit from its initialisation, with the callback
// that it receives from the host; KAPClientTerminate from its termination; KAPClientKill from a
// static object's destructor, for a process that exits without termination (docs/components.md
// shows a whole component).
//
// Threads: all of this belongs to one thread, the binding thread; no other thread uses the runtime
//   meanwhile.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Binds the runtime. True when it is bound. A second call returns true, fetches nothing and ignores
// its argument. Failures:
//   - false: the callback is null, the host lacks a procedure of the binder, of errors or of
//     strings, it has no unregister counter or no unknown error, or a LazyTerminate member fails to
//     initialise
//   - CKAPError "Missing Interface": the host lacks a procedure of containers or of memory
//   - CKAPError with an empty message: there are static caches, but the host lacks a procedure of
//     caches
// Deliberate: after a failure the callback stays stored, unless it is null, so the next call
// returns true without having bound anything. KAPClientTerminate is the way back.
[[nodiscard]] bool KAPClientInit(KAPGetProcAddressProc getProc);

// Releases everything that the runtime holds of the host, and ends the binding. A no-op when no
// host is bound. Rethrows what a LazyTerminate member throws; the runtime is then still bound.
//
// Objects that outlive the binding are destroyed without a host call, until the runtime is bound
// again: what is destroyed then is released to the new host. So either the objects or the bindings
// to other hosts end with the binding. Objects do not remember their host, which would cost each of
// them a word and a comparison.
void KAPClientTerminate();

// Ends the binding at process exit, when the host may be gone: forgets everything and calls nothing
// in the host. Objects destroyed afterwards make no host call either: the slots of the methods that
// would release them are empty (TKAPProcTable::CallReleasing).
void KAPClientKill() noexcept;

// The runtime cannot be bound; the message says why. A std::runtime_error with a text of its own,
// because a CKAPError needs the host that could not be bound.
class KAPBindingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Binds the runtime for its own lifetime.
// Errors: the constructor throws KAPBindingError, and no host is bound afterwards. It also throws
//   when the runtime is bound already, and leaves that binding alone: two owners of one binding
//   would end it twice. The destructor never throws; it reports what a LazyTerminate member throws.
class [[nodiscard]] KAPClient {
 public:
  // Binds the runtime to the host with this callback.
  [[nodiscard]] explicit KAPClient(KAPGetProcAddressProc getProc);
  KAPClient(const KAPClient&) = delete;
  KAPClient& operator=(const KAPClient&) = delete;
  ~KAPClient();

 private:
  static void Unbind() noexcept;
};

}  // namespace KAP_T_MT
