// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "kap/KAPClientBase.h"
#include "kap/KAPClientProcs.h"
#include "kap/KAPError.h"
#include "kap/KAPInterfaceClient.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Hands a client object to the host: `make(address)` asks the host for its own object. If there is
// one, the client object is the host's; otherwise it is deleted. Null when the interface's table
// cannot be loaded. Throws what `make` throws.
template <class Interface, class Client, class Make>
auto KAPHandOver(TKAPClientObject<Client> client, Make make)
    -> decltype(make(static_cast<void*>(nullptr))) {
  if (!client) CKAPError::ThrowError(kUnknownErrorID);
  if (!TKAPInterfaceClient<Interface>::TryRefresh()) return nullptr;
  auto* made = make(KAPClientAddress(client.get()));
  if (made) static_cast<void>(client.release());
  return made;
}

// For constructors: returns `made`. For null, throws the error of a table that cannot be loaded, if
// that is the reason. A null result means that the host made no object.
template <class Interface, class Object>
Object* KAPMade(Object* made) {
  if (!made) TKAPInterfaceClient<Interface>::Refresh();
  return made;
}

}  // namespace KAP_T_MT
