#pragma once

#include <stdexcept>
#include <string>

#include "kap/KAPTypes.h"

namespace KAPHost {

// A component could not be opened, lacks an entry point or failed to initialise. The text says
// which, of which file.
class LoadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A component: a shared library with the entry points <Name>Initialize, <Name>Terminate and
// <Name>GetVersion.
// Ownership: the library stays loaded for as long as this object lives; its destructor terminates
//   the component if it is initialised, and unloads it. Destroy components, and whatever they made,
//   before their host.
// Threads: one controlling thread at a time.
class Component {
 public:
  // Opens `path`, as dlopen finds it, without initialising. Throws LoadError.
  explicit Component(const std::string& path, const std::string& name = "KAPUtils");
  Component(Component&& other) noexcept;
  Component& operator=(Component&& other) noexcept;
  ~Component();

  // The component's answer: true when it is initialised now. After a false answer it is still due
  // to be terminated, which happens at the latest on destruction.
  bool Initialize(KAPGetProcAddressProc getProcAddress);
  void Terminate();

  int Version() const { return fGetVersion(); }
  const std::string& Path() const { return fPath; }

 private:
  void* Symbol(const std::string& symbol) const;
  void Close() noexcept;

  std::string fPath;
  void* fLibrary = nullptr;
  int (*fInitialize)(KAPGetProcAddressProc) = nullptr;
  void (*fTerminate)() = nullptr;
  int (*fGetVersion)() = nullptr;
  bool fMustTerminate = false;
};

}  // namespace KAPHost
