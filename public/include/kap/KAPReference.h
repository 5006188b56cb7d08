// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "kap/KAPAdopt.h"
#include "kap/KAPInterfaceClient.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to an object that a host interface counts with methods of its own, `Add` and `Drop`,
// or to none. Base of the wrappers of everything that is not a container: buffers, cache
// identities, sinks, progress. Containers have KAPContainerBaseGeneric, since their AddRef may
// fail. KAPAdopt.h lists the ways to construct one.
// Ownership: holds one reference, released on destruction.
// Errors: adding a reference throws when the interface's table cannot be loaded
//   (KAPInterfaceClient.h). Destruction never throws, and does nothing after the binding.
// Threads: a plain value: one thread at a time per reference, any number of references per object.
template <class Interface, class Object, TKAPName Add = "AddRef", TKAPName Drop = "Release">
class TKAPReference {
 public:
  // An empty reference.
  TKAPReference() noexcept = default;
  // Adds a reference; adopts the caller's; adopts the one that comes with a new handle. Null makes
  // an empty reference.
  explicit TKAPReference(Object* handle) : fHandle(AddRef(handle)) {}
  TKAPReference(Object* handle, KAPAdopt) noexcept : fHandle(handle) {}
  explicit TKAPReference(TKAPNewHandle<Object> made) noexcept : fHandle(std::move(made)) {}
  // A copy adds a reference; a move leaves the other one empty.
  TKAPReference(const TKAPReference& other) : fHandle(AddRef(other.fHandle)) {}
  TKAPReference(TKAPReference&& other) noexcept : fHandle(other.Detach()) {}
  TKAPReference& operator=(TKAPReference other) noexcept {
    std::swap(fHandle, other.fHandle);
    return *this;
  }
  ~TKAPReference() {
    if (fHandle) Client::template CallReleasing<Drop>(fHandle);
  }

  Object* Handle() const noexcept { return fHandle; }  // borrowed
  // Passes the reference to the caller; the object is empty afterwards.
  [[nodiscard]] Object* Detach() noexcept { return std::exchange(fHandle, nullptr); }
  // Whether the reference is empty, and whether it is not.
  bool IsNull() const noexcept { return !fHandle; }
  explicit operator bool() const noexcept { return fHandle != nullptr; }

 private:
  using Client = TKAPInterfaceClient<Interface>;

  static Object* AddRef(Object* handle) {
    if (handle) Client::template Call<Add>(handle);
    return handle;
  }

  Object* fHandle = nullptr;
};

}  // namespace KAP_T_MT
