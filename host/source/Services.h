#pragma once

#include <span>

#include "Binder.h"
#include "kap/KAPHostInterfaces.h"
#include "kaphost/Snapshot.h"

namespace KAPHost {

// One of the host's own interfaces: how it is registered and what it adds to the books (null:
// nothing). A new interface is a new file with such a constant, declared below and listed in
// Services.cpp.
struct Service {
  void (*fRegister)(Binder& binder);
  void (*fCount)(Snapshot& books);
};

extern const Service kBinderService;
extern const Service kStringService;
extern const Service kErrorService;
extern const Service kMemoryService;
extern const Service kContainerService;
extern const Service kStreamService;
extern const Service kSharedBuffService;
extern const Service kCacheService;
extern const Service kFilterService;
extern const Service kProgressService;

std::span<const Service* const> Services();

// Registers an interface's procedures under the names of its declaration, but for that of the
// interface.
template <class Interface, class... Procs>
void RegisterProcsUnder(const char* interfaceName, Binder& binder, Procs... procs) {
  for (const auto& entry : Interface::Registration(procs...)) {
    binder.Register(interfaceName, entry.fMethodName, entry.fProcName, entry.fProc);
  }
}

// Registers an interface's procedures under the names of its declaration.
template <class Interface, class... Procs>
void RegisterProcs(Binder& binder, Procs... procs) {
  RegisterProcsUnder<Interface>(Interface::kName, binder, procs...);
}

}  // namespace KAPHost
