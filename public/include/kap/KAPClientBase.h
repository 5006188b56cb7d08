#pragma once

#include <memory>
#include <utility>

#include "kap/KAPMemory.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Bases of the objects that a component hands to the host: as instances of containers, or as
// streams, sinks and the like. They live in host memory.
class CKAPClientBase : public KAPHostAllocated {
 protected:
  CKAPClientBase() = default;
  ~CKAPClientBase() = default;
};

// The root of those that are deleted through it. A destructor may raise: what goes wrong at the end
// of a stream can be told nowhere else. Whoever deletes one passes the exception on to the host or
// reports it; see TKAPClientObject.
class CKAPVirtualClientBase : public KAPHostAllocated {
 public:
  virtual ~CKAPVirtualClientBase() noexcept(false) = default;

 protected:
  CKAPVirtualClientBase() = default;
  CKAPVirtualClientBase(const CKAPVirtualClientBase&) = default;
  CKAPVirtualClientBase& operator=(const CKAPVirtualClientBase&) = default;
};

// The deletion procedure of instances of CKAPVirtualClientBase; null is ignored. What a destructor
// raises is reported to the binder.
void KAPDeleteVirtualClientBase(void* instance) noexcept;

struct KAPDeleteClient {
  void operator()(CKAPVirtualClientBase* client) const noexcept {
    KAPDeleteVirtualClientBase(client);
  }
};

// Owns a client object that has not been handed over yet.
template <class Client>
using TKAPClientObject = std::unique_ptr<Client, KAPDeleteClient>;

// A new client object. Raises what its constructor and the host's memory raise.
template <class Client, class... Args>
TKAPClientObject<Client> KAPNewClient(Args&&... args) {
  return TKAPClientObject<Client>(new Client(std::forward<Args>(args)...));
}

}  // namespace KAP_T_MT
