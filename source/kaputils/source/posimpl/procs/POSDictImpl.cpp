#include "posimpl/procs/POSDictImpl.h"

#include "kap/KAPBinder.h"

namespace NPOSObjectImpl {

bool RegisterPOSDictImpl() {
  bool registered = true;
  KAP_T_MT::POSInterfaceSet::ForEach(
      [&]<class Interface>() { registered = registered && RegisterProcs<Interface>(); });
  return registered;
}

void UnregisterPOSDictImpl() {
  KAP_T_MT::POSInterfaceSet::ForEach(
      []<class Interface>() { KAP_T_MT::KAPUnregisterInterface(Interface::kName); });
}

}  // namespace NPOSObjectImpl
