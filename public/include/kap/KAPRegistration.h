#pragma once

#include "kap/KAPBinder.h"
#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Registers `procs` as the procedures of an interface, in slot order; see KAPRegisterProcTable.
template <class Interface, class... Procs>
bool KAPRegisterInterface(Procs... procs) {
  const auto entries = Interface::Registration(procs...);
  return KAPRegisterProcTable(entries.data(), entries.size(), Interface::kName) != 0;
}

}  // namespace KAP_T_MT
