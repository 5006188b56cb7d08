#include "kaphost/Component.h"

#include <dlfcn.h>

#include <utility>

namespace KAPHost {

namespace {

std::string LastError() {
  const char* text = dlerror();
  return text ? text : "unknown reason";
}

}  // namespace

Component::Component(const std::string& path, const std::string& name)
    : fPath(path), fLibrary(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (!fLibrary) throw LoadError("cannot load \"" + path + "\": " + LastError());
  try {
    fInitialize = reinterpret_cast<decltype(fInitialize)>(Symbol(name + "Initialize"));
    fTerminate = reinterpret_cast<decltype(fTerminate)>(Symbol(name + "Terminate"));
    fGetVersion = reinterpret_cast<decltype(fGetVersion)>(Symbol(name + "GetVersion"));
  } catch (...) {
    Close();
    throw;
  }
}

Component::Component(Component&& other) noexcept
    : fPath(std::move(other.fPath)),
      fLibrary(std::exchange(other.fLibrary, nullptr)),
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

Component::~Component() { Close(); }

void* Component::Symbol(const std::string& symbol) const {
  void* address = dlsym(fLibrary, symbol.c_str());
  if (!address) {
    throw LoadError("\"" + fPath + "\" is not a component: " + LastError());
  }
  return address;
}

bool Component::Initialize(KAPGetProcAddressProc getProcAddress) {
  fMustTerminate = true;
  return fInitialize(getProcAddress) != 0;
}

void Component::Terminate() {
  fMustTerminate = false;
  fTerminate();
}

void Component::Close() noexcept {
  if (fMustTerminate) Terminate();
  if (fLibrary) dlclose(fLibrary);
  fLibrary = nullptr;
}

}  // namespace KAPHost
