#include "posimpl/procs/POSDictImpl.h"

#include "kap/KAPBinder.h"
#include "pos/POSInterfaces.h"

namespace NPOSObjectImpl {

namespace {

struct Registration {
  const char* fInterfaceName;
  bool (*fRegister)();
};

constexpr Registration kRegistrations[] = {
    {KAP_T_MT::POSObjectInterface::kName, &RegisterObjectProcs},
    {KAP_T_MT::POSObjectStatics::kName, &RegisterStaticsProcs},
    {KAP_T_MT::POSNumberInterface::kName, &RegisterNumberProcs},
    {KAP_T_MT::POSStringInterface::kName, &RegisterStringProcs},
    {KAP_T_MT::POSUnicodeStringInterface::kName, &RegisterUnicodeStringProcs},
    {KAP_T_MT::POSBinDataInterface::kName, &RegisterBinDataProcs},
    {KAP_T_MT::POSRawPointerInterface::kName, &RegisterRawPointerProcs},
    {KAP_T_MT::POSArrayInterface::kName, &RegisterArrayProcs},
    {KAP_T_MT::POSDictInterface::kName, &RegisterDictProcs},
    {KAP_T_MT::POSDictIteratorInterface::kName, &RegisterDictIteratorProcs},
};

}  // namespace

bool RegisterPOSDictImpl() {
  for (const Registration& registration : kRegistrations) {
    if (!registration.fRegister()) return false;
  }
  return true;
}

void UnregisterPOSDictImpl() {
  for (const Registration& registration : kRegistrations) {
    KAP_T_MT::KAPUnregisterInterface(registration.fInterfaceName);
  }
}

}  // namespace NPOSObjectImpl
