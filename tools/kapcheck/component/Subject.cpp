// SPDX-License-Identifier: MIT
#include "component/Subject.h"

#include <dlfcn.h>

namespace KAPCheck {

Subject::Subject(const std::string& path, const std::string& name)
    : fName(name), fLibrary(Guarded("the constructors of the library", [&] {
        return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
      })) {
  if (!fLibrary) throw TestFailure(std::string("the library cannot be loaded: ") + ::dlerror());
  fInitialize = EntryPoint<int(KAPGetProcAddressProc)>("Initialize");
  fTerminate = EntryPoint<void()>("Terminate");
  fGetVersion = EntryPoint<int()>("GetVersion");
}

Subject::~Subject() { ::dlclose(fLibrary); }

bool Subject::Initialize(KAPGetProcAddressProc getProcAddress) const {
  return Guarded(fName + "Initialize", [&] { return fInitialize(getProcAddress) != 0; });
}

void Subject::Terminate() const {
  Guarded(fName + "Terminate", [&] { fTerminate(); });
}

int Subject::Version() const {
  return Guarded(fName + "GetVersion", [&] { return fGetVersion(); });
}

bool Subject::IsInMemory(const std::string& path) {
  void* const library = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (library) ::dlclose(library);
  return library != nullptr;
}

template <class Proc>
Proc* Subject::EntryPoint(const char* suffix) const {
  void* const symbol = ::dlsym(fLibrary, (fName + suffix).c_str());
  if (!symbol) throw TestFailure("the library does not export " + fName + suffix);
  return reinterpret_cast<Proc*>(symbol);
}

}  // namespace KAPCheck
