// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "kap/KAPTypes.h"

namespace KAPHost {

class Library;

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
//   component if this object initialised it, and unloads it. Destroy components, and whatever they
//   made, before their host. A component that is unloaded with procedures still registered is
//   reported: the procedures are unregistered, and the library stays in memory for callers that
//   kept an address. A host that checks also reports calls of those that are declared to it. The
//   library also stays when it has the delete procedure of a container that lives.
// Threads: one controlling thread at a time. Components of the same file count as one object.
class [[nodiscard]] Component {
 public:
  // Opens `path`, searched for as by dlopen, without initialising. Throws LoadError.
  explicit Component(const std::string& path, const std::string& name = "KAPUtils");
  Component(Component&& other) noexcept;
  Component& operator=(Component&& other) noexcept;
  ~Component();

  // Returns the component's result: whether it is initialised. A component that fails to initialise
  // is terminated as well, at the latest on destruction or before another object initialises the
  // same file. False, and nothing is called, when another object has initialised the same file or
  // this one is moved from.
  [[nodiscard]] bool Initialize(KAPGetProcAddressProc getProcAddress);
  // A no-op when another object has initialised the same file or this one is moved from.
  void Terminate();
  // Whether this object or another one of the same file is initialised.
  bool IsInitialised() const;

  // What the component's "GetVersion" function returns, and the path that it was opened with.
  int Version() const { return fGetVersion(); }
  const std::string& Path() const { return fPath; }

 private:
  void* Symbol(const std::string& symbol) const;
  // Whether this object was the last to initialise the library, which has not been terminated
  // since.
  bool IsInTurn() const;

  std::string fPath;
  std::shared_ptr<Library> fLibrary;  // null after a move
  int (*fInitialize)(KAPGetProcAddressProc) = nullptr;
  void (*fTerminate)() = nullptr;
  int (*fGetVersion)() = nullptr;
  unsigned long fTurn = 0;  // the library's at the last initialisation by this object
};

}  // namespace KAPHost
