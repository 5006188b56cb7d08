#pragma once

#include <stdexcept>

#include "kap/KAPTypes.h"

// Binding the client runtime to a host, and the end of the binding: the top of the client runtime.
//
// A program that embeds a host, or a test, holds a KAPClient:
//
//   KAPHost::Host host;
//   const KAP_T_MT::KAPClient client(host.GetProcAddress());
//   ...                        // objects of the runtime
//
// A component calls the functions from its entry points: KAPClientInit with the callback that the
// host hands to it, KAPClientTerminate when the host is done with it, and KAPClientKill in a
// process-exit hook. All three run on the host's one controlling thread while no other thread uses
// the runtime. Each is [binding thread].

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Binds the runtime. True when it is bound, also when it was bound before: a second call fetches
// nothing and ignores its argument. False when the callback is null, or the binder lacks one of its
// own procedures or one of the core tables. Throws CKAPError "Missing Interface" without the
// container or the memory interface, and a CKAPError with an empty message when there are static
// caches but no cache interface. After a failure the callback stays stored, deliberately:
// KAPClientTerminate is the way back.
bool KAPClientInit(KAPGetProcAddressProc getProc);

// Releases what the runtime holds of the host and ends the binding; a no-op when there is none.
// Objects that outlive the binding are destroyed without a host call.
void KAPClientTerminate();

// Ends the binding at process exit, when the host may be gone: forgets everything and calls nothing.
// Objects that static destructors release afterwards make no host call either.
void KAPClientKill() noexcept;

// The runtime could not be bound. The message says why.
class KAPBindingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Binds the runtime for as long as it lives, so that the end of the binding cannot be forgotten.
// Objects of the runtime belong into its scope; those that outlive it are destroyed without a host
// call.
// Errors: the constructor throws KAPBindingError, and then nothing is bound. Also when the runtime is
//   bound already: two owners of one binding would end it twice.
class KAPClient {
 public:
  explicit KAPClient(KAPGetProcAddressProc getProc);
  KAPClient(const KAPClient&) = delete;
  KAPClient& operator=(const KAPClient&) = delete;
  ~KAPClient();
};

}  // namespace KAP_T_MT
