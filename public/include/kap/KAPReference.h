#pragma once

#include <utility>

#include "kap/KAPInterfaceClient.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Marks a constructor that takes over the caller's reference instead of adding one:
//
//   CKAPFilter(handle)              // adds a reference; the caller keeps its own
//   CKAPFilter(handle, KAPAdopt())  // the caller's reference becomes the wrapper's
struct KAPAdopt {};

// A reference to an object that a host interface counts with its own "AddRef" and "Release", or to
// none. Base of the wrappers of everything that is not a container: buffers, cache identities,
// sinks, progress. Containers have KAPContainerBaseGeneric, since their AddRef may refuse.
// Ownership: holds one reference, released on destruction.
// Errors: adding a reference throws when the interface's table cannot be loaded
//   (KAPInterfaceClient.h). Destruction never throws, and does nothing after the binding.
// Threads: a plain value: one thread at a time per reference, any number of references per object.
template <class Interface, class Object>
class TKAPReference {
 public:
  TKAPReference() noexcept = default;
  explicit TKAPReference(Object* handle) : fHandle(AddRef(handle)) {}
  TKAPReference(Object* handle, KAPAdopt) noexcept : fHandle(handle) {}
  TKAPReference(const TKAPReference& other) : fHandle(AddRef(other.fHandle)) {}
  TKAPReference(TKAPReference&& other) noexcept : fHandle(other.Detach()) {}
  TKAPReference& operator=(TKAPReference other) noexcept {
    std::swap(fHandle, other.fHandle);
    return *this;
  }
  ~TKAPReference() {
    if (fHandle) Client::template CallReleasing<"Release">(fHandle);
  }

  Object* Handle() const noexcept { return fHandle; }  // borrowed
  // Passes the reference to the caller.
  Object* Detach() noexcept { return std::exchange(fHandle, nullptr); }
  bool IsNull() const noexcept { return !fHandle; }
  explicit operator bool() const noexcept { return fHandle != nullptr; }

 private:
  using Client = TKAPInterfaceClient<Interface>;

  static Object* AddRef(Object* handle) {
    if (handle) Client::template Call<"AddRef">(handle);
    return handle;
  }

  Object* fHandle = nullptr;
};

}  // namespace KAP_T_MT
