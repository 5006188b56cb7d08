// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstring>
#include <utility>

#include "kap/KAPContainerInterface.h"
#include "kap/KAPError.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/KAPReference.h"
#include "kap/KAPStringAtom.h"

// Containers, the records in which every object crosses the binder: what the runtime reads of them,
// and owners of references to them. KAPContainerInterface.h explains containers.
//
//   KAPContainerBaseGeneric made(
//       CKAPContainer::NewFullContainer(object, impl, interface, &Delete));
//   KAPContainerBaseGeneric shared(made.Handle());   // adds a reference
//   Return(made.Detach());                           // passes the maker's on

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Typed calls of the host's containers.
using KAPContainerClient = TKAPInterfaceClient<KAPContainerInterface>;

// What the runtime knows about container records. Static only.
// Errors, besides those stated below: where the host is called, a table that cannot be loaded
//   throws (KAPInterfaceClient.h).
// Threads: any, except Init [binding thread].
class CKAPContainer {
 public:
  // For KAPClient: loads the container table and asks at which offset records keep their primary
  // instance. False when the runtime's static objects do not exist yet; throws when the table
  // cannot be loaded (KAPInterfaceClient.h).
  static bool Init();

  // The instance of that name, borrowed; null when the container has none. Throws the error that
  // the host returns.
  static void* BCGetInstance(KAPContainer* container, const CKAPStringAtom& signature);

  // The same, but reads the primary instance from the record and calls the host only for others.
  // CKAPError "invalid container" for null.
  static void* GetInstance(KAPContainer* container, const CKAPStringAtom& signature) {
    if (!container) [[unlikely]]
      ThrowInvalidContainerException();
    void* instance = PrimaryInstance(container, signature);
    return instance ? instance : BCGetInstance(container, signature);
  }

  // The primary instance if `signature` (an atom, not the empty object) names it, else null. Makes
  // no host call: it compares two pointers, which is why every procedure can afford to check the
  // handles it receives. `container` is a live container.
  static void* PrimaryInstance(const KAPContainer* container,
                               const CKAPStringAtom& signature) noexcept {
    return PrimaryInstance(container, signature.Text());
  }
  // The same with the text of the atom.
  static void* PrimaryInstance(const KAPContainer* container, const char* signature) noexcept {
    const Primary primary = GetPrimary(container);
    return primary.fSignature == signature ? primary.fInstance : nullptr;
  }

  // The signature: the text pointer of the primary instance's name, borrowed from the container;
  // null when it has none, and for null. Makes no host call.
  static const char* GetSignature(const KAPContainer* container) noexcept {
    return container ? GetPrimary(container).fSignature : nullptr;
  }

  // A container with `instance` as its primary one: one reference for the caller. The last release
  // passes the instance to `deleteInstance`, which may be null. Throws the error that the host
  // returns; the instance then stays the caller's.
  static TKAPNewHandle<KAPContainer> NewFullContainer(void* instance,
                                                      const CKAPStringAtom& instanceName,
                                                      const CKAPStringAtom& interfaceName,
                                                      KAPDeleteProc deleteInstance);

  // Adds a reference and returns the handle. CKAPError "invalid container" for null or when the
  // host adds no reference. An unchecked reference would be released without ever having been
  // added.
  static KAPContainer* AddRef(KAPContainer* container) {
    if (!container || !KAPContainerClient::Call<"AddRef">(container)) [[unlikely]]
      ThrowInvalidContainerException();
    return container;
  }
  static KAPContainer* AddRef(TKAPNewHandle<KAPContainer>) = delete;  // would add a second one

  [[noreturn]] static void ThrowInvalidContainerException();  // CKAPError "invalid container"
  [[noreturn]] static void ThrowNoSignatureException();       // CKAPError "couldn't get signature"

 private:
  struct Primary {
    void* fInstance;
    const char* fSignature;
  };
  static_assert(offsetof(Primary, fInstance) == 0 && offsetof(Primary, fSignature) == 8);
  static Primary GetPrimary(const KAPContainer* container) noexcept {
    Primary primary;
    std::memcpy(&primary, reinterpret_cast<const char*>(container) + fPrimaryOffset,
                sizeof primary);
    return primary;
  }

  static constinit long fPrimaryOffset;
  static constinit int fCPPCheck;  // 13 when the static objects of the runtime exist
};

// A deliberate no-op, for components that install it as the release of containers while no host is
// bound. The runtime leaves the slot empty instead.
void KAPContainerNoOpRelease(KAPContainer* container) noexcept;

// A reference to a container, or to none. Base of the typed wrappers: property objects, streams,
// data stores, directories.
// Ownership: holds one reference, released on destruction; copies share the container.
// Errors: CKAPError "invalid container" when the host adds no reference; a table that cannot be
//   loaded throws as KAPInterfaceClient.h says. In both cases the object is empty or, in an
//   assignment, unchanged. Destruction never throws, and does nothing after the binding.
// Threads: a plain value: one thread at a time per reference, any number of references per
//   container.
class KAPContainerBaseGeneric {
 public:
  KAPContainerBaseGeneric() noexcept = default;
  // Adds a reference. Null also fails: "invalid container".
  explicit KAPContainerBaseGeneric(KAPContainer* container)
      : fContainer(CKAPContainer::AddRef(container)) {}
  // Adds a reference without checking the result. Only for handles known to be live: a reference
  // that was not added would still be released. The library itself does not use it. A `bool` is
  // most likely meant for CKAPContainerHolder, where it says the opposite.
  KAP_DEPRECATED("leave the int out, so that the reference is checked")
  KAPContainerBaseGeneric(KAPContainer* container, int);
  KAPContainerBaseGeneric(KAPContainer* container, bool) = delete;
  KAPContainerBaseGeneric(TKAPNewHandle<KAPContainer>, int) = delete;  // would add a second one
  // Adopts the reference; null makes an empty object.
  KAPContainerBaseGeneric(KAPContainer* container, KAPAdopt) noexcept : fContainer(container) {}
  explicit KAPContainerBaseGeneric(TKAPNewHandle<KAPContainer> made) noexcept
      : fContainer(std::move(made)) {}
  // A copy adds a reference; a move leaves the other one empty.
  KAPContainerBaseGeneric(const KAPContainerBaseGeneric& other)
      : fContainer(other.fContainer ? CKAPContainer::AddRef(other.fContainer) : nullptr) {}
  KAPContainerBaseGeneric(KAPContainerBaseGeneric&& other) noexcept : fContainer(other.Detach()) {}
  // Unchanged when it throws.
  KAPContainerBaseGeneric& operator=(const KAPContainerBaseGeneric& other) {
    return *this = KAPContainerBaseGeneric(other);
  }
  KAPContainerBaseGeneric& operator=(KAPContainerBaseGeneric&& other) noexcept {
    KAPContainerBaseGeneric released(std::move(other));
    std::swap(fContainer, released.fContainer);
    return *this;
  }
  ~KAPContainerBaseGeneric() {
    if (fContainer) KAPContainerClient::CallReleasing<"Release">(fContainer);
  }

  KAPContainer* Handle() const noexcept { return fContainer; }  // borrowed
  // Passes the reference to the caller; the object is empty afterwards.
  [[nodiscard]] KAPContainer* Detach() noexcept { return std::exchange(fContainer, nullptr); }
  // Whether the reference is empty, and whether it is not.
  bool IsNull() const noexcept { return !fContainer; }
  explicit operator bool() const noexcept { return fContainer != nullptr; }

 private:
  KAPContainer* fContainer = nullptr;
};

// Owns one reference to a container for the length of a scope. Unlike KAPContainerBaseGeneric it
// can be neither copied nor moved.
// Errors: as KAPContainerBaseGeneric.
class CKAPContainerHolder {
 public:
  // A new container without instances. Throws the error that the host returns. Deprecated: New.
  KAP_DEPRECATED("use CKAPContainerHolder::New()") CKAPContainerHolder();
  [[nodiscard]] static CKAPContainerHolder New();
  // Adds a reference; adopts it; adopts the one that comes with a new handle. Null makes an empty
  // holder.
  explicit CKAPContainerHolder(KAPContainer* container)
      : fContainer(container ? CKAPContainer::AddRef(container) : nullptr) {}
  CKAPContainerHolder(KAPContainer* container, KAPAdopt) noexcept : fContainer(container) {}
  explicit CKAPContainerHolder(TKAPNewHandle<KAPContainer> made) noexcept
      : fContainer(std::move(made)) {}
  // The deprecated form: adopts the reference if `skipAddRef`, else adds one. Exactly a `bool`: an
  // `int` is most likely meant for KAPContainerBaseGeneric, where it says the opposite. The
  // reference of a new handle is adopted in any case, because nothing else could release it.
  KAP_DEPRECATED("use KAPAdopt() for true, and leave false out")
  CKAPContainerHolder(KAPContainer* container, bool skipAddRef)
      : fContainer(container && !skipAddRef ? CKAPContainer::AddRef(container) : container) {}
  KAP_DEPRECATED("leave the bool out")
  CKAPContainerHolder(TKAPNewHandle<KAPContainer> made, bool) noexcept
      : fContainer(std::move(made)) {}
  template <class Other>
  CKAPContainerHolder(KAPContainer* container, Other) = delete;
  CKAPContainerHolder(const CKAPContainerHolder&) = delete;
  CKAPContainerHolder& operator=(const CKAPContainerHolder&) = delete;
  ~CKAPContainerHolder() {
    if (fContainer) KAPContainerClient::CallReleasing<"Release">(fContainer);
  }

  KAPContainer* Handle() const noexcept { return fContainer; }  // borrowed
  // Passes the reference to the caller; the holder is empty afterwards.
  [[nodiscard]] KAPContainer* Detach() noexcept { return std::exchange(fContainer, nullptr); }

 private:
  KAPContainer* fContainer;
};

// Points to a container without holding a reference. At the end of the scope the host destroys the
// container unless a reference is left: for containers that may have lost their last reference
// without being destroyed ("DecrementWithoutDelete").
// Errors: none. The caller guarantees that the container outlives the object.
class CKAPCachedContainerHolder {
 public:
  // Null makes an empty holder.
  explicit CKAPCachedContainerHolder(KAPContainer* container) noexcept : fContainer(container) {}
  explicit CKAPCachedContainerHolder(TKAPNewHandle<KAPContainer>) = delete;  // would not release it
  CKAPCachedContainerHolder(const CKAPCachedContainerHolder&) = delete;
  CKAPCachedContainerHolder& operator=(const CKAPCachedContainerHolder&) = delete;
  ~CKAPCachedContainerHolder() {
    if (fContainer) KAPContainerClient::CallReleasing<"DeleteUnownedContainer">(fContainer);
  }

  KAPContainer* Handle() const noexcept { return fContainer; }  // borrowed

 private:
  KAPContainer* fContainer;
};

}  // namespace KAP_T_MT
