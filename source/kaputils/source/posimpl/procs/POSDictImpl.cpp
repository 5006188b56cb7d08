// SPDX-License-Identifier: MIT
#include "posimpl/procs/POSDictImpl.h"

namespace NPOSObjectImpl {

bool RegisterPOSDictImpl() { return RegisterSet<KAP_T_MT::POSInterfaceSet>(); }

void UnregisterPOSDictImpl() { UnregisterSet<KAP_T_MT::POSInterfaceSet>(); }

}  // namespace NPOSObjectImpl
