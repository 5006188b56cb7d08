// SPDX-License-Identifier: MIT
#include "kaphost/Component.h"

#include <dlfcn.h>

#include <utility>

#include "base/Current.h"
#include "base/Modules.h"
#include "component/Library.h"
#include "trace/Watcher.h"

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
      fTurn(std::exchange(other.fTurn, 0)) {}

Component& Component::operator=(Component&& other) noexcept {
  std::swap(fPath, other.fPath);
  std::swap(fLibrary, other.fLibrary);
  std::swap(fInitialize, other.fInitialize);
  std::swap(fTerminate, other.fTerminate);
  std::swap(fGetVersion, other.fGetVersion);
  std::swap(fTurn, other.fTurn);
  return *this;
}

Component::~Component() {
  if (IsInTurn()) Terminate();
}

void* Component::Symbol(const std::string& symbol) const {
  void* address = fLibrary->Find(symbol);
  if (!address) {
    const char* reason = dlerror();
    throw LoadError("\"" + fPath + "\" is not a component: " + (reason ? reason : symbol));
  }
  return address;
}

bool Component::IsInTurn() const {
  return fLibrary && fLibrary->fState != Library::State::kIdle && fLibrary->fTurn == fTurn;
}

bool Component::IsInitialised() const {
  return fLibrary && fLibrary->fState == Library::State::kInitialised;
}

// A second object of the same file must not bind, or even terminate, what the first one uses. A
// failed initialisation is of no use to the first one, but blocks the next until it is terminated.
bool Component::Initialize(KAPGetProcAddressProc getProcAddress) {
  if (!fLibrary) return false;
  if (!IsInTurn()) {
    if (IsInitialised()) return false;
    if (fLibrary->fState == Library::State::kFailed) fTerminate();
    fTurn = ++fLibrary->fTurn;
    fLibrary->fState = Library::State::kFailed;
  }
  const bool succeeds = fInitialize(getProcAddress) != 0;
  if (succeeds) fLibrary->fState = Library::State::kInitialised;
  return succeeds;
}

void Component::Terminate() {
  if (!fLibrary || (fLibrary->fState != Library::State::kIdle && !IsInTurn())) return;
  fLibrary->fState = Library::State::kIdle;
  fTerminate();
  if (Watcher* const watcher = Current<Watcher>()) {
    watcher->ForgetBinding(NameOfCodeAt(reinterpret_cast<const void*>(fTerminate)));
  }
}

}  // namespace KAPHost
