// SPDX-License-Identifier: MIT

// host LIBRARY EXTREMES: a host in C, with nothing but KAPUtilsC.h: the binder and the interfaces
// without which no component binds itself. Loads the library and a component, lets examples/
// component_c/caller.c use them, and prints how much is held at the end. For one thread.

#include <dlfcn.h>
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>

#include "caller.h"

// ---- What the handles point to ----

struct KAPStringAtom {
  KAPStringAtom* next;
  int references;
  char text[];
};

struct KAPError {
  KAPStringAtom* message;
  KAPStringAtom* component;
  long code;
  void* clientData;
  KAPDeleteProc freeClientData;
};

struct KAPContainer {
  void* instance;
  const char* signature;
  KAPStringAtom* instanceName;
  KAPStringAtom* interfaceName;
  KAPDeleteProc deleteInstance;
  int references;
};

static int gHeld;  // atoms, errors, containers and blocks, by reference

// ---- The binder ----

typedef struct Entry {
  char* names[3];
  void* proc;
  bool isGone;
} Entry;

static Entry gEntries[1000];
static size_t gCount;
static unsigned long gUnregisterCount;

static Entry* Find(const char* interface, const char* method, const char* procedure) {
  for (size_t i = 0; i < gCount; ++i) {
    Entry* const entry = &gEntries[i];
    if (!entry->isGone && strcmp(entry->names[0], interface) == 0 &&
        strcmp(entry->names[1], method) == 0 && strcmp(entry->names[2], procedure) == 0) {
      return entry;
    }
  }
  return NULL;
}

static void* GetProc(const char* interface, const char* method, const char* procedure) {
  const Entry* const entry = Find(interface, method, procedure);
  return entry ? entry->proc : NULL;
}

static char* Copy(const char* text) {
  const size_t size = strlen(text) + 1;
  char* const copy = malloc(size);
  return copy ? memcpy(copy, text, size) : NULL;
}

static int Register(const char* interface, const char* method, const char* procedure, void* proc) {
  if (!interface || !method || !procedure || !proc) return 0;
  Entry* entry = Find(interface, method, procedure);
  if (!entry) {
    if (gCount == sizeof gEntries / sizeof *gEntries) return 0;
    char* const names[] = {Copy(interface), Copy(method), Copy(procedure)};
    if (!names[0] || !names[1] || !names[2]) return 0;
    entry = &gEntries[gCount++];
    memcpy(entry->names, names, sizeof names);
  }
  entry->proc = proc;
  return 1;
}

static void Unregister(const char* interface) {
  for (size_t i = 0; i < gCount; ++i) {
    if (strcmp(gEntries[i].names[0], interface) == 0) gEntries[i].isGone = true;
  }
  __atomic_add_fetch(&gUnregisterCount, 1, __ATOMIC_RELEASE);
}

static void Report(const char* message) { printf("reported: %s\n", message); }
static unsigned long* CountAddress(void) { return &gUnregisterCount; }
static int IsMultiThreaded(void) { return 0; }

// ---- Strings ----

static KAPStringAtom* gAtoms;

static KAPStringAtom* AddAtom(KAPStringAtom* atom) {
  if (atom) ++atom->references, ++gHeld;
  return atom;
}

static KAPStringAtom* NewAtom(const char* text) {
  if (!text) return NULL;
  KAPStringAtom* atom = gAtoms;
  while (atom && strcmp(atom->text, text) != 0) atom = atom->next;
  if (!atom) {
    const size_t size = strlen(text) + 1;
    atom = malloc(sizeof *atom + size);
    if (!atom) return NULL;
    *atom = (KAPStringAtom){gAtoms, 0};
    memcpy(atom->text, text, size);
    gAtoms = atom;
  }
  return AddAtom(atom);
}

static void DeleteAtom(KAPStringAtom* atom) {
  if (!atom) return;
  --gHeld;
  if (--atom->references != 0) return;
  KAPStringAtom** place = &gAtoms;
  while (*place != atom) place = &(*place)->next;
  *place = atom->next;
  free(atom);
}

static const char* TextOf(KAPStringAtom* atom) { return atom ? atom->text : NULL; }
static void AddRefAtom(KAPStringAtom* atom) { AddAtom(atom); }

// ---- Errors: this host makes none but the two that live as long as the process ----

static KAPError gUnknownError, gMemoryError;

static KAPError* NewError(const char* message, const char* component, long code, void* clientData,
                          KAPDeleteProc freeClientData) {
  (void)message, (void)component, (void)code, (void)clientData, (void)freeClientData;
  return NULL;
}
static KAPError* CoreError(int id) { return id == 1 ? &gMemoryError : &gUnknownError; }
static void KeepError(KAPError* error) { (void)error; }
static KAPStringAtom* MessageOf(KAPError* error) { return AddAtom(error->message); }
static KAPStringAtom* ComponentOf(KAPError* error) { return AddAtom(error->component); }
static long CodeOf(KAPError* error) { return error ? error->code : 0; }
static void* InfoOf(KAPError* error) { return error ? error->clientData : NULL; }

// ---- Memory ----

static void* Alloc(size_t size) {
  void* const block = malloc(size);
  if (block) ++gHeld;
  return block;
}
static void* Realloc(void* block, size_t size) {
  return block ? realloc(block, size) : Alloc(size);
}
static void Free(void* block) {
  if (block) --gHeld;
  free(block);
}
static size_t SizeOf(void* block) { return malloc_usable_size(block); }

// ---- Containers with one instance ----

static KAPError* NewFull(KAPContainer** out, void* instance, KAPStringAtom* instanceName,
                         KAPStringAtom* interfaceName, KAPDeleteProc deleteInstance) {
  *out = malloc(sizeof **out);
  if (!*out) return &gMemoryError;
  **out = (KAPContainer){
      instance, TextOf(instanceName), AddAtom(instanceName), AddAtom(interfaceName), deleteInstance,
      1};
  ++gHeld;
  return NULL;
}

static bool AddContainer(KAPContainer* container) {
  if (!container || container->references == 0) return false;
  ++container->references, ++gHeld;
  return true;
}

static void DeleteUnowned(KAPContainer* container) {
  if (!container || container->references != 0) return;
  if (container->deleteInstance) container->deleteInstance(container->instance);
  DeleteAtom(container->instanceName);
  DeleteAtom(container->interfaceName);
  free(container);
}

static void Decrement(KAPContainer* container) {
  if (container) --container->references, --gHeld;
}

static void ReleaseContainer(KAPContainer* container) {
  Decrement(container);
  DeleteUnowned(container);
}

static KAPError* GetMethod(void** out, KAPContainer* container, KAPStringAtom* method,
                           KAPStringAtom* procedure, int optional) {
  (void)optional;
  *out = GetProc(TextOf(container->interfaceName), TextOf(method), TextOf(procedure));
  return NULL;
}

static KAPError* FindInstance(void** out, KAPContainer* container, KAPStringAtom* name) {
  *out = container->signature == TextOf(name) ? container->instance : NULL;
  return NULL;
}

static void* GetInstance(KAPContainer* container, KAPStringAtom* name) {
  return container->signature == TextOf(name) ? container->instance : NULL;
}

static KAPStringAtom* GetSignature(KAPContainer* container) {
  return AddAtom(container->instanceName);
}
static const int* CountOf(KAPContainer* container) { return &container->references; }
static long Offset(void) { return (long)offsetof(KAPContainer, instance); }

// What this host leaves out.
static KAPError* NoNew(KAPContainer** out) { return *out = NULL, &gUnknownError; }
static KAPError* NoClone(KAPContainer** out, KAPContainer* container) {
  (void)container;
  return NoNew(out);
}
static KAPError* NoInterface(KAPContainer* container, KAPStringAtom* instance,
                             KAPStringAtom* interface) {
  (void)container, (void)instance, (void)interface;
  return &gUnknownError;
}
static KAPError* NoInstance(KAPContainer* container, KAPStringAtom* name, void* instance,
                            KAPDeleteProc deleteInstance) {
  (void)container, (void)name, (void)instance, (void)deleteInstance;
  return &gUnknownError;
}
static KAPError* NoParent(void** out, KAPContainer* container, KAPStringAtom* instance,
                          KAPStringAtom* method, KAPStringAtom* procedure) {
  (void)container, (void)instance, (void)method, (void)procedure;
  return *out = NULL, &gUnknownError;
}

// A host registers its own tables as a component does.
static bool Start(void) {
  const KAPBinderInterfaceProcs binder = {Register, Report, Unregister, CountAddress,
                                          IsMultiThreaded};
  const KAPStringInterfaceProcs strings = {NewAtom, DeleteAtom, TextOf, AddRefAtom};
  const KAPErrorInterfaceProcs errors = {NewError,  CoreError,   KeepError, KeepError,
                                         MessageOf, ComponentOf, CodeOf,    InfoOf};
  const KAPMemoryInterfaceProcs memory = {Alloc, Realloc, Free, SizeOf};
  const KAPContainerInterfaceProcs containers = {
      NewFull,       NoNew,        NoClone,    AddContainer, ReleaseContainer, Decrement,
      DeleteUnowned, NoInterface,  NoInstance, GetMethod,    NoParent,         GetInstance,
      FindInstance,  GetSignature, CountOf,    Offset};
  return KAPBinderInterfaceRegister(&binder, &binder) &&
         KAPStringInterfaceRegister(&strings, &binder) &&
         KAPErrorInterfaceRegister(&errors, &binder) &&
         KAPMemoryInterfaceRegister(&memory, &binder) &&
         KAPContainerInterfaceRegister(&containers, &binder);
}

typedef struct Component {
  void* library;
  int (*initialize)(KAPGetProcAddressProc getProc);
  void (*terminate)(void);
} Component;

// The entry point "NameFunction", stored in `place`.
static bool LoadSymbol(void* place, void* library, const char* name, const char* function) {
  char symbol[64];
  snprintf(symbol, sizeof symbol, "%s%s", name, function);
  void* const address = dlsym(library, symbol);
  memcpy(place, &address, sizeof address);
  return address;
}

static bool Load(Component* out, const char* path, const char* name) {
  out->library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (!out->library) {
    fprintf(stderr, "%s\n", dlerror());
    return false;
  }
  return LoadSymbol(&out->initialize, out->library, name, "Initialize") &&
         LoadSymbol(&out->terminate, out->library, name, "Terminate") && out->initialize(&GetProc);
}

static void Unload(const Component* component) {
  component->terminate();
  dlclose(component->library);
}

int main(int argc, char** argv) {
  Component library, extremes;
  if (argc != 3 || !Start()) return 2;
  if (!Load(&library, argv[1], "KAPUtils") || !Load(&extremes, argv[2], "Extremes")) return 1;
  const int status = PrintLargest(&GetProc);
  Unload(&extremes);
  Unload(&library);
  printf("held at the end: %d\n", gHeld);
  return status;
}
