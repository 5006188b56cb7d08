// SPDX-License-Identifier: MIT
#include "OwnHost.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <tuple>

#include "kap/KAPHostInterfaces.h"

using namespace KAP_T_MT;

// ---- The records behind the handles ----

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
int gHeld = 0;

// Registers an interface of the host from its declaration: one procedure a method, in slot order.
template <class Interface>
void Provide(const auto... procs) {
  for (const auto& entry : Interface::Registration(procs...)) {
    gProcs[{Interface::kName, entry.fMethodName, entry.fProcName}] = entry.fProc;
  }
}

// ---- The binder ----

int Register(const char* interfaceName, const char* method, const char* name, void* proc) {
  gProcs[{interfaceName, method, name}] = proc;
  return 1;
}

void Report(const char* message) { std::printf("reported: %s\n", message); }

// The counter tells components to look their procedures up again.
void Unregister(const char* interfaceName) {
  const auto removed = std::erase_if(
      gProcs, [=](const auto& entry) { return std::get<0>(entry.first) == interfaceName; });
  if (removed != 0) __atomic_add_fetch(&gUnregisterCount, 1, __ATOMIC_RELEASE);
}

// ---- Strings ----

KAPStringAtom* NewAtom(const char* text) {
  if (!text) return nullptr;
  const auto found = gAtoms.try_emplace(text).first;
  found->second.fText = &found->first;
  ++found->second.fReferences;
  ++gHeld;
  return &found->second;
}

void DeleteAtom(KAPStringAtom* atom) {
  if (!atom) return;
  --gHeld;
  if (--atom->fReferences == 0) gAtoms.erase(gAtoms.find(*atom->fText));
}

void AddAtom(KAPStringAtom* atom) {
  if (atom) ++atom->fReferences, ++gHeld;
}

KAPStringAtom* Again(KAPStringAtom* atom) { return AddAtom(atom), atom; }

const char* TextOf(KAPStringAtom* atom) { return atom ? atom->fText->c_str() : nullptr; }

// ---- Errors ----

KAPError* NewError(const char* message, const char* component, long code, void* clientData,
                   KAPDeleteProc freeClientData) {
  ++gHeld;
  return new KAPError{NewAtom(message), NewAtom(component), code, clientData, freeClientData, 1};
}

void AddError(KAPError* error) {
  if (error) ++error->fReferences, ++gHeld;
}

void ReleaseError(KAPError* error) {
  if (!error) return;
  --gHeld;
  if (--error->fReferences != 0) return;
  if (error->fFreeClientData) error->fFreeClientData(error->fClientData);
  DeleteAtom(error->fMessage);
  DeleteAtom(error->fComponent);
  delete error;
}

// A core error lives as long as the process: the host keeps a reference, which it does not count.
KAPError* CoreError(int id) {
  static KAPError* const errors[] = {NewError("unknown error", "Own", 0, nullptr, nullptr),
                                     NewError("out of memory", "Own", 1, nullptr, nullptr)};
  static const int own = gHeld -= 6;  // two errors with two atoms each
  static_cast<void>(own);
  return errors[id == 1];
}

KAPError* Fail(const char* message) { return NewError(message, "Own", 2, nullptr, nullptr); }

// ---- Memory ----

void* Alloc(std::size_t size) { return ++gHeld, std::malloc(size); }
void* Realloc(void* block, std::size_t size) { return gHeld += !block, std::realloc(block, size); }

void Free(void* block) {
  if (block) --gHeld;
  std::free(block);
}

// ---- Containers with one instance ----

KAPError* NewFull(KAPContainer** out, void* instance, KAPStringAtom* instanceName,
                  KAPStringAtom* interfaceName, KAPDeleteProc deleteInstance) {
  if (!out || !instanceName || !interfaceName) return Fail("an argument is null");
  *out = new KAPContainer{
      instance, TextOf(instanceName), Again(instanceName), Again(interfaceName), deleteInstance, 1};
  ++gHeld;
  return nullptr;
}

bool AddContainer(KAPContainer* container) {
  if (!container || container->fReferences == 0) return false;
  return ++container->fReferences, ++gHeld, true;
}

void DeleteUnowned(KAPContainer* container) {
  if (!container || container->fReferences != 0) return;
  if (container->fDeleteInstance) container->fDeleteInstance(container->fInstance);
  DeleteAtom(container->fInstanceName);
  DeleteAtom(container->fInterfaceName);
  delete container;
}

void Decrement(KAPContainer* container) {
  if (container) --container->fReferences, --gHeld;
}

void ReleaseContainer(KAPContainer* container) {
  Decrement(container);
  DeleteUnowned(container);
}

// The methods are what is registered for the container's interface.
KAPError* GetMethod(void** out, KAPContainer* container, KAPStringAtom* method, KAPStringAtom* proc,
                    int) {
  if (!out || !container || !method || !proc) return Fail("an argument is null");
  *out = OwnHostGetProc(TextOf(container->fInterfaceName), TextOf(method), TextOf(proc));
  return nullptr;
}

void* GetInstance(KAPContainer* container, KAPStringAtom* name) {
  const bool named = container && name && container->fSignature == TextOf(name);
  return named ? container->fInstance : nullptr;
}

KAPError* NGetInstance(void** out, KAPContainer* container, KAPStringAtom* name) {
  if (!out || !container || !name) return Fail("an argument is null");
  *out = GetInstance(container, name);
  return nullptr;
}

// What this host leaves out: containers with several instances.
constexpr auto kNotHere = [](auto...) { return Fail("this host does not do that"); };

}  // namespace

void* OwnHostGetProc(const char* interfaceName, const char* methodName, const char* procName) {
  const auto found = gProcs.find({interfaceName, methodName, procName});
  return found == gProcs.end() ? nullptr : found->second;
}

int OwnHostHeld() { return gHeld; }

void OwnHostStart() {
  Provide<KAPBinderInterface>(
      &Register, &Report, &Unregister, [] { return &gUnregisterCount; }, [] { return 0; });
  Provide<KAPStringInterface>(&NewAtom, &DeleteAtom, &TextOf, &AddAtom);
  Provide<KAPErrorInterface>(
      &NewError, &CoreError, &AddError, &ReleaseError,
      [](KAPError* error) { return Again(error ? error->fMessage : nullptr); },
      [](KAPError* error) { return Again(error ? error->fComponent : nullptr); },
      [](KAPError* error) { return error ? error->fCode : 0; },
      [](KAPError* error) { return error ? error->fClientData : nullptr; });
  Provide<KAPMemoryInterface>(&Alloc, &Realloc, &Free,
                              [](void* block) { return malloc_usable_size(block); });
  Provide<KAPContainerInterface>(
      &NewFull, kNotHere, kNotHere, &AddContainer, &ReleaseContainer, &Decrement, &DeleteUnowned,
      kNotHere, kNotHere, &GetMethod, kNotHere, &GetInstance, &NGetInstance,
      [](KAPContainer* container) { return Again(container ? container->fInstanceName : nullptr); },
      [](KAPContainer* container) -> const int* { return &container->fReferences; },
      [] { return 0L; });
}
