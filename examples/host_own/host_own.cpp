// SPDX-License-Identifier: MIT
// A host without kaphost: loads the library into a host of its own (OwnHost.h), uses property
// objects through the same classes as any client, and shows that nothing is held at the end.

#include <dlfcn.h>

#include <cstdio>

#include "KAP.h"
#include "OwnHost.h"
#include "POSDict.h"

using namespace KAP_T_MT;

namespace {

template <class Function>
Function Symbol(void* library, const char* name) {
  return reinterpret_cast<Function>(dlsym(library, name));
}

void Work() {
  const KAPClient client(&OwnHostGetProc);
  CPOSDict person(CPOSObject::CreateFromText("< name (Ada) born [10 December 1815] >"));
  person.PutOrThrow("age", CPOSNumber(36));
  std::printf("%s: %.0f, born %.0f\n", person.GetString("name").Get(),
              person.GetNumber("age").Get(), person.DeepGetNumber("born[2]").Get());
  person.Put("nothing", CPOSObject());  // rejected: the library reports it
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: host_own KAPUTILS (a shared library)\n");
    return 2;
  }
  OwnHostStart();
  void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (!library) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  const auto initialize = Symbol<int (*)(KAPGetProcAddressProc)>(library, "KAPUtilsInitialize");
  const auto terminate = Symbol<void (*)()>(library, "KAPUtilsTerminate");
  if (!initialize || !terminate || !initialize(&OwnHostGetProc)) return 1;
  Work();
  terminate();
  dlclose(library);
  std::printf("held at the end: %d\n", OwnHostHeld());
  return 0;
}
