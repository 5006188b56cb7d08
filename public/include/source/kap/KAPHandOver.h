#pragma once

#include <utility>

#include "kap/KAPClientBase.h"
#include "kap/KAPClientProcs.h"
#include "kap/KAPError.h"
#include "kap/KAPProcTable.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Hands a client object to the host: `make`, given its address, asks for the host's object. The
// client is the host's once there is one, and deleted otherwise. Null when the interface's table
// cannot be loaded; what `make` raises passes.
template <class Interface, class Client, class Make>
auto KAPHandOver(TKAPClientObject<Client> client, Make make)
    -> decltype(make(static_cast<void*>(nullptr))) {
  if (!client) CKAPError::ThrowError(kUnknownErrorID);
  if (!TKAPInterfaceClient<Interface>::TryRefresh()) return nullptr;
  auto* made = make(KAPClientAddress(client.get()));
  if (made) static_cast<void>(client.release());
  return made;
}

}  // namespace KAP_T_MT
