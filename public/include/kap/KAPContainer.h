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

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using KAPContainerClient = TKAPInterfaceClient<KAPContainerInterface>;

// What the runtime knows of container records. Static only.
class CKAPContainer {
 public:
  // For KAPClient: loads the container table and asks where records keep their primary instance.
  // CKAPError "Missing Interface" when the table cannot be loaded.
  static bool Init();

  // The instance of that name; null when there is none. Throws an error that the host returns.
  static void* BCGetInstance(KAPContainer* container, const CKAPStringAtom& signature);

  // The same, but the primary instance is read from the record itself.
  static void* GetInstance(KAPContainer* container, const CKAPStringAtom& signature) {
    void* instance = PrimaryInstance(container, signature);
    return instance ? instance : BCGetInstance(container, signature);
  }

  // The primary instance if it has that name (not empty), else null. Makes no host call.
  static void* PrimaryInstance(const KAPContainer* container,
                               const CKAPStringAtom& signature) noexcept {
    const Primary primary = GetPrimary(container);
    return primary.fSignature == signature.Text() ? primary.fInstance : nullptr;
  }

  // The signature: the text pointer of the primary instance's name; null for a container without
  // one.
  static const char* GetSignature(const KAPContainer* container) noexcept {
    return GetPrimary(container).fSignature;
  }

  // A container for `instance`: one reference for the caller. Throws an error that the host returns;
  // the instance then stays the caller's.
  static KAPContainer* NewFullContainer(void* instance, const CKAPStringAtom& instanceName,
                                        const CKAPStringAtom& interfaceName,
                                        KAPDeleteProc deleteInstance);

  // Adds a reference. CKAPError "invalid container" when the host refuses, or for null.
  static KAPContainer* AddRef(KAPContainer* container) {
    if (!container || !KAPContainerClient::Call<"AddRef">(container)) [[unlikely]]
      ThrowInvalidContainerException();
    return container;
  }

  [[noreturn]] static void ThrowInvalidContainerException();  // CKAPError "invalid container"
  [[noreturn]] static void ThrowNoSignatureException();       // CKAPError "couldn't get signature"

 private:
  struct Primary {
    void* fInstance;
    const char* fSignature;
  };
  static Primary GetPrimary(const KAPContainer* container) noexcept {
    Primary primary;
    std::memcpy(&primary, reinterpret_cast<const char*>(container) + fPrimaryOffset,
                sizeof primary);
    return primary;
  }

  static constinit long fPrimaryOffset;
  static constinit int fCPPCheck;  // 13: the static objects of the runtime exist
};

// The "Release" of containers before the binding and after it: a deliberate no-op.
void KAPContainerNoOpRelease(KAPContainer* container) noexcept;

// A reference to a container, or to none. Base of the typed wrappers.
// Ownership: holds one reference, released on destruction.
// Errors: CKAPError "invalid container" when the host refuses a reference.
// Threads: as a plain value; several references may share one container.
class KAPContainerBaseGeneric {
 public:
  KAPContainerBaseGeneric() noexcept = default;
  explicit KAPContainerBaseGeneric(KAPContainer* container)
      : fContainer(CKAPContainer::AddRef(container)) {}
  // Adds a reference without checking the result: only for handles known to be live.
  KAPContainerBaseGeneric(KAPContainer* container, int);
  KAPContainerBaseGeneric(KAPContainer* container, KAPAdopt) noexcept : fContainer(container) {}
  KAPContainerBaseGeneric(const KAPContainerBaseGeneric& other)
      : fContainer(other.fContainer ? CKAPContainer::AddRef(other.fContainer) : nullptr) {}
  KAPContainerBaseGeneric(KAPContainerBaseGeneric&& other) noexcept : fContainer(other.Detach()) {}
  // Unchanged when the host refuses.
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
  KAPContainer* Detach() noexcept { return std::exchange(fContainer, nullptr); }
  bool IsNull() const noexcept { return !fContainer; }
  explicit operator bool() const noexcept { return fContainer != nullptr; }

 private:
  KAPContainer* fContainer = nullptr;
};

// Owns one reference to a container for the length of a scope.
class CKAPContainerHolder {
 public:
  CKAPContainerHolder();  // a new, empty container; throws an error that the host returns
  CKAPContainerHolder(KAPContainer* container, bool skipAddRef)
      : fContainer(container && !skipAddRef ? CKAPContainer::AddRef(container) : container) {}
  CKAPContainerHolder(const CKAPContainerHolder&) = delete;
  CKAPContainerHolder& operator=(const CKAPContainerHolder&) = delete;
  ~CKAPContainerHolder() {
    if (fContainer) KAPContainerClient::CallReleasing<"Release">(fContainer);
  }

  KAPContainer* Handle() const noexcept { return fContainer; }
  KAPContainer* Detach() noexcept { return std::exchange(fContainer, nullptr); }

 private:
  KAPContainer* fContainer;
};

// Holds a container without a reference, and has it destroyed at the end of the scope unless another
// owner holds one.
class CKAPCachedContainerHolder {
 public:
  explicit CKAPCachedContainerHolder(KAPContainer* container) noexcept : fContainer(container) {}
  CKAPCachedContainerHolder(const CKAPCachedContainerHolder&) = delete;
  CKAPCachedContainerHolder& operator=(const CKAPCachedContainerHolder&) = delete;
  ~CKAPCachedContainerHolder() {
    if (fContainer) KAPContainerClient::CallReleasing<"DeleteUnownedContainer">(fContainer);
  }

  KAPContainer* Handle() const noexcept { return fContainer; }

 private:
  KAPContainer* fContainer;
};

}  // namespace KAP_T_MT
