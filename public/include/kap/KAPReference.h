#pragma once

#include <utility>

#include "kap/KAPAdopt.h"
#include "kap/KAPBinder.h"
#include "kap/KAPProcTable.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Owns one reference to an object that a host interface counts with its own "AddRef" and "Release",
// or to none. Base of the wrappers of what is no container.
// Errors: adding a reference raises what a table that cannot be loaded raises; destruction never
//   throws, and reaches no host once the runtime is unbound.
// Threads: as a plain value.
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
    if (fHandle) Client::template CallOrStandBy<"Release">(fHandle);
  }

  Object* Handle() const noexcept { return fHandle; }  // borrowed
  // The reference passes to the caller.
  Object* Detach() noexcept { return std::exchange(fHandle, nullptr); }
  bool IsNull() const noexcept { return !fHandle; }
  explicit operator bool() const noexcept { return fHandle != nullptr; }

  // From now on a reference given back no longer reaches the host.
  static void StandBy() noexcept {
    Client::template StandBy<"Release">([](Object*) { KAPNoOpFunction(); });
  }

 private:
  using Client = TKAPInterfaceClient<Interface>;

  static Object* AddRef(Object* handle) {
    if (handle) Client::template Call<"AddRef">(handle);
    return handle;
  }

  Object* fHandle = nullptr;
};

}  // namespace KAP_T_MT
