// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>
#include <memory>
#include <utility>

#include "kap/KAPMemory.h"

// Bases of the objects that a component hands to the host: as instances of containers, or as
// streams, sinks and progress objects. They live in host memory.
//
//   struct Counter : KAPClientDataSink {
//     void Write(const unsigned char*, std::size_t size) override { fBytes += size; }
//     std::size_t fBytes = 0;
//   };
//   CKAPDataSink sink(KAPNewClient<Counter>());  // the host's from here on

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// For objects without virtual functions. A caller that deletes one must know its class.
class CKAPClientBase : public KAPHostAllocated {
 protected:
  CKAPClientBase() = default;
  ~CKAPClientBase() = default;
};

// For objects that are deleted through this base. A destructor may throw, deliberately: a stream
// that cannot write its last bytes has no other way to report it. Never delete one in a plain
// destructor: TKAPClientObject and the procedures below turn the exception into a report or an
// error.
class CKAPVirtualClientBase : public KAPHostAllocated {
 public:
  virtual ~CKAPVirtualClientBase() noexcept(false) = default;

 protected:
  // For derived classes, which decide whether their objects can be copied.
  CKAPVirtualClientBase() = default;
  CKAPVirtualClientBase(const CKAPVirtualClientBase&) = default;
  CKAPVirtualClientBase& operator=(const CKAPVirtualClientBase&) = default;
};

// Deletes an instance of CKAPVirtualClientBase: a KAPDeleteProc for containers. Null is ignored.
// `instance` is the address of that base, which in a class with several bases is another one than
// the object's: convert to CKAPVirtualClientBase* before the pointer becomes a void*. What the
// destructor throws is reported to the binder.
void KAPDeleteVirtualClientBase(void* instance) noexcept;

// The deleter of TKAPClientObject.
struct KAPDeleteClient {
  // As KAPDeleteVirtualClientBase.
  void operator()(CKAPVirtualClientBase* client) const noexcept {
    KAPDeleteVirtualClientBase(client);
  }
};

// Owns a client object that has not been handed to the host yet.
template <class Client>
using TKAPClientObject = std::unique_ptr<Client, KAPDeleteClient>;

// A new client object. Throws what its constructor and CKAPMemory::Alloc throw. For other classes,
// such as those of CKAPClientBase, there is std::make_unique.
template <std::derived_from<CKAPVirtualClientBase> Client, class... Args>
requires(alignof(Client) <= kKAPBlockAlignment)
    [[nodiscard]] TKAPClientObject<Client> KAPNewClient(Args&&... args) {
  return TKAPClientObject<Client>(new Client(std::forward<Args>(args)...));
}

}  // namespace KAP_T_MT
