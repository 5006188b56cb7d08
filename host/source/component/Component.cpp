#include "kaphost/Component.h"

#include <dlfcn.h>

#include <utility>

#include "component/Library.h"

namespace KAPHost {

Component::Component(const std::string& path, const std::string& name)
    : fPath(path), fLibrary(Library::Open(path, name)) {
  fInitialize = reinterpret_cast<decltype(fInitialize)>(Symbol(name + "Initialize"));
  fTerminate = reinterpret_cast<decltype(fTerminate)>(Symbol(name + "Terminate"));
  fGetVersion = reinterpret_cast<decltype(fGetVersion)>(Symbol(name + "GetVersion"));
}

Component::Component(Component&& other) noexcept
    : fPath(std::move(other.fPath)),
      fLibrary(std::move(other.fLibrary)),
      fInitialize(other.fInitialize),
      fTerminate(other.fTerminate),
      fGetVersion(other.fGetVersion),
      fMustTerminate(std::exchange(other.fMustTerminate, false)) {}

Component& Component::operator=(Component&& other) noexcept {
  std::swap(fPath, other.fPath);
  std::swap(fLibrary, other.fLibrary);
  std::swap(fInitialize, other.fInitialize);
  std::swap(fTerminate, other.fTerminate);
  std::swap(fGetVersion, other.fGetVersion);
  std::swap(fMustTerminate, other.fMustTerminate);
  return *this;
}

Component::~Component() {
  if (fMustTerminate) Terminate();
}

void* Component::Symbol(const std::string& symbol) const {
  void* address = fLibrary->Find(symbol);
  if (!address) {
    const char* reason = dlerror();
    throw LoadError("\"" + fPath + "\" is not a component: " + (reason ? reason : symbol));
  }
  return address;
}

// A second object of the same file must not bind, or even terminate, what the first one uses.
bool Component::Initialize(KAPGetProcAddressProc getProcAddress) {
  if (fLibrary->fIsInitialised && !fMustTerminate) return false;
  fMustTerminate = fLibrary->fIsInitialised = true;
  return fInitialize(getProcAddress) != 0;
}

void Component::Terminate() {
  if (fLibrary->fIsInitialised && !fMustTerminate) return;
  fMustTerminate = fLibrary->fIsInitialised = false;
  fTerminate();
}

}  // namespace KAPHost
