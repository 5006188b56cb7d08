#pragma once

#include <stdexcept>
#include <string>

#include "kap/KAPTypes.h"

namespace KAPHost {

// A component cannot be opened, lacks an entry point or fails to initialise. The text names the
// file and the reason.
class LoadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A component: a shared library with the entry points <Name>Initialize, <Name>Terminate and
// <Name>GetVersion. Host::Load makes one that is initialised.
//
//   KAPHost::Component component("libTotals.so", "Totals");
//   if (!component.Initialize(host.GetProcAddress())) ...
//
// Ownership: the library stays loaded as long as this object lives. The destructor terminates the
//   component if it is initialised, and unloads it. Destroy components, and whatever they made,
//   before their host.
// Threads: one controlling thread at a time.
class Component {
 public:
  // Opens `path`, searched for as by dlopen, without initialising. Throws LoadError.
  explicit Component(const std::string& path, const std::string& name = "KAPUtils");
  Component(Component&& other) noexcept;
  Component& operator=(Component&& other) noexcept;
  ~Component();

  // Returns the component's result: whether it is initialised. A component that fails to initialise
  // is terminated as well, on destruction at the latest.
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
