// SPDX-License-Identifier: MIT
#include "OwnHost.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <string>
#include <tuple>
#include <type_traits>

#include "kap/KAPHostInterfaces.h"

using namespace KAP_T_MT;

// ---- What the handles point to ----

struct KAPStringAtom {
  const std::string* fText = nullptr;  // the key in the table of atoms
  int fReferences = 0;
};

struct KAPError {
  KAPStringAtom* fMessage;
  KAPStringAtom* fComponent;
  long fCode;
  void* fClientData;
  KAPDeleteProc fFreeClientData;
  int fReferences;
};

struct KAPContainer {
  void* fInstance;         // the two words that components read, at the offset
  const char* fSignature;  // that "GetOffsetToPrimaryInstance" returns: 0
  KAPStringAtom* fInstanceName;
  KAPStringAtom* fInterfaceName;
  KAPDeleteProc fDeleteInstance;
  int fReferences;
};

namespace {

std::map<std::tuple<std::string, std::string, std::string>, void*> gProcs;
unsigned long gUnregisterCount = 0;
std::map<std::string, KAPStringAtom> gAtoms;  // equal texts share one atom and one text
KAPError* gCoreErrors[2];                     // unknown error, out of memory; never destroyed
int gHeld = 0;

// No exception may leave a procedure. What fails for lack of memory returns null or 0.
template <class Body>
auto OrNothing(Body body) noexcept -> decltype(body()) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

// Registers an interface of the host from its declaration: one procedure a method, in slot order.
template <class Interface>
void Provide(const auto... procs) {
  for (const auto& entry : Interface::Registration(procs...)) {
    gProcs[{Interface::kName, entry.fMethodName, entry.fProcName}] = entry.fProc;
  }
}

// ---- The binder ----

int Register(const char* interfaceName, const char* method, const char* name, void* proc) noexcept {
  if (!interfaceName || !method || !name || !proc) return 0;
  return OrNothing([=] {
    gProcs[{interfaceName, method, name}] = proc;
    return 1;
  });
}

void Report(const char* message) noexcept { std::printf("reported: %s\n", message); }

// The counter tells components to look their procedures up again.
void Unregister(const char* interfaceName) noexcept {
  if (!interfaceName) return;
  const auto removed = std::erase_if(
      gProcs, [=](const auto& entry) { return std::get<0>(entry.first) == interfaceName; });
  if (removed != 0) __atomic_add_fetch(&gUnregisterCount, 1, __ATOMIC_RELEASE);
}

// ---- Strings ----

KAPStringAtom* NewAtom(const char* text) noexcept {
  if (!text) return nullptr;
  return OrNothing([=]() -> KAPStringAtom* {
    const auto found = gAtoms.try_emplace(text).first;
    found->second.fText = &found->first;
    ++found->second.fReferences;
    ++gHeld;
    return &found->second;
  });
}

void DeleteAtom(KAPStringAtom* atom) noexcept {
  if (!atom) return;
  --gHeld;
  if (--atom->fReferences == 0) gAtoms.erase(gAtoms.find(*atom->fText));
}

void AddAtom(KAPStringAtom* atom) noexcept {
  if (atom) ++atom->fReferences, ++gHeld;
}

KAPStringAtom* Again(KAPStringAtom* atom) noexcept { return AddAtom(atom), atom; }

const char* TextOf(KAPStringAtom* atom) noexcept { return atom ? atom->fText->c_str() : nullptr; }

// ---- Errors ----

KAPError* NewError(const char* message, const char* component, long code, void* clientData,
                   KAPDeleteProc freeClientData) noexcept {
  KAPStringAtom* const messageAtom = NewAtom(message);
  KAPStringAtom* const componentAtom = NewAtom(component);
  const bool hasTexts = !messageAtom == !message && !componentAtom == !component;
  KAPError* const error = hasTexts ? new (std::nothrow) KAPError{messageAtom, componentAtom,  code,
                                                                 clientData,  freeClientData, 1}
                                   : nullptr;
  if (error) return ++gHeld, error;
  DeleteAtom(messageAtom);
  DeleteAtom(componentAtom);
  return nullptr;
}

bool IsCore(KAPError* error) noexcept { return error == gCoreErrors[0] || error == gCoreErrors[1]; }

void AddError(KAPError* error) noexcept {
  if (error && !IsCore(error)) ++error->fReferences, ++gHeld;
}

void ReleaseError(KAPError* error) noexcept {
  if (!error || IsCore(error)) return;
  --gHeld;
  if (--error->fReferences != 0) return;
  if (error->fFreeClientData) error->fFreeClientData(error->fClientData);
  DeleteAtom(error->fMessage);
  DeleteAtom(error->fComponent);
  delete error;
}

KAPError* CoreError(int id) noexcept { return gCoreErrors[id == 1]; }

KAPError* Fail(const char* message) noexcept {
  KAPError* const error = NewError(message, "Own", 2, nullptr, nullptr);
  return error ? error : gCoreErrors[1];
}

// ---- Memory ----

void* Alloc(std::size_t size) noexcept {
  void* const block = std::malloc(size);
  if (block) ++gHeld;
  return block;
}

void Free(void* block) noexcept {
  if (block) --gHeld;
  std::free(block);
}

// The C library's realloc frees a block that shrinks to nothing; the host's keeps one.
void* Realloc(void* block, std::size_t size) noexcept {
  return block ? std::realloc(block, size == 0 ? 1 : size) : Alloc(size);
}

// ---- Containers with one instance ----

KAPError* NewFull(KAPContainer** out, void* instance, KAPStringAtom* instanceName,
                  KAPStringAtom* interfaceName, KAPDeleteProc deleteInstance) noexcept {
  if (out) *out = nullptr;
  if (!out || !instanceName || !interfaceName) return Fail("an argument is null");
  *out = new (std::nothrow)
      KAPContainer{instance, TextOf(instanceName), instanceName, interfaceName, deleteInstance, 1};
  if (!*out) return gCoreErrors[1];
  AddAtom(instanceName);
  AddAtom(interfaceName);
  ++gHeld;
  return nullptr;
}

bool AddContainer(KAPContainer* container) noexcept {
  if (!container || container->fReferences == 0) return false;
  return ++container->fReferences, ++gHeld, true;
}

void DeleteUnowned(KAPContainer* container) noexcept {
  if (!container || container->fReferences != 0) return;
  if (container->fDeleteInstance) container->fDeleteInstance(container->fInstance);
  DeleteAtom(container->fInstanceName);
  DeleteAtom(container->fInterfaceName);
  delete container;
}

void Decrement(KAPContainer* container) noexcept {
  if (container) --container->fReferences, --gHeld;
}

void ReleaseContainer(KAPContainer* container) noexcept {
  Decrement(container);
  DeleteUnowned(container);
}

// The methods are what is registered for the container's interface.
KAPError* GetMethod(void** out, KAPContainer* container, KAPStringAtom* method, KAPStringAtom* proc,
                    int) noexcept {
  if (out) *out = nullptr;
  if (!out || !container || !method || !proc) return Fail("an argument is null");
  *out = OwnHostGetProc(TextOf(container->fInterfaceName), TextOf(method), TextOf(proc));
  return nullptr;
}

void* GetInstance(KAPContainer* container, KAPStringAtom* name) noexcept {
  const bool named = container && name && container->fSignature == TextOf(name);
  return named ? container->fInstance : nullptr;
}

KAPError* NGetInstance(void** out, KAPContainer* container, KAPStringAtom* name) noexcept {
  if (out) *out = nullptr;
  if (!out || !container || !name) return Fail("an argument is null");
  *out = GetInstance(container, name);
  return nullptr;
}

// What this host leaves out: containers with several instances. A result place comes first. It does
// not throw; g++ 12 converts no generic lambda to a procedure that says so.
constexpr auto kNotHere = [](auto first, auto...) {
  if constexpr (std::is_pointer_v<std::remove_pointer_t<decltype(first)>>) {
    if (first) *first = nullptr;
  }
  return Fail("this host does not do that");
};

}  // namespace

void* OwnHostGetProc(const char* interfaceName, const char* methodName,
                     const char* procName) noexcept {
  if (!interfaceName || !methodName || !procName) return nullptr;
  return OrNothing([=]() -> void* {
    const auto found = gProcs.find({interfaceName, methodName, procName});
    return found == gProcs.end() ? nullptr : found->second;
  });
}

int OwnHostHeld() noexcept { return gHeld; }

void OwnHostStart() {
  gCoreErrors[0] = NewError("unknown error", "Own", 0, nullptr, nullptr);
  gCoreErrors[1] = NewError("out of memory", "Own", 1, nullptr, nullptr);
  if (!gCoreErrors[0] || !gCoreErrors[1]) throw std::bad_alloc();
  gHeld = 0;  // what there is so far is the host's own

  Provide<KAPBinderInterface>(
      &Register, &Report, &Unregister, []() noexcept { return &gUnregisterCount; },
      []() noexcept { return 0; });
  Provide<KAPStringInterface>(&NewAtom, &DeleteAtom, &TextOf, &AddAtom);
  Provide<KAPErrorInterface>(
      &NewError, &CoreError, &AddError, &ReleaseError,
      [](KAPError* error) noexcept { return Again(error ? error->fMessage : nullptr); },
      [](KAPError* error) noexcept { return Again(error ? error->fComponent : nullptr); },
      [](KAPError* error) noexcept { return error ? error->fCode : 0; },
      [](KAPError* error) noexcept { return error ? error->fClientData : nullptr; });
  Provide<KAPMemoryInterface>(&Alloc, &Realloc, &Free,
                              [](void* block) noexcept { return malloc_usable_size(block); });
  Provide<KAPContainerInterface>(
      &NewFull, kNotHere, kNotHere, &AddContainer, &ReleaseContainer, &Decrement, &DeleteUnowned,
      kNotHere, kNotHere, &GetMethod, kNotHere, &GetInstance, &NGetInstance,
      [](KAPContainer* container) noexcept {
        return Again(container ? container->fInstanceName : nullptr);
      },
      [](KAPContainer* container) noexcept -> const int* {
        return container ? &container->fReferences : nullptr;
      },
      []() noexcept { return 0L; });
}
