// SPDX-License-Identifier: MIT
#include "OwnHost.h"
#include "kapcheck/HostPlugin.h"

// The example of a host as kapcheck can load it.
extern "C" [[gnu::visibility("default")]] KAPGetProcAddressProc KAPCheckHost(
    KAPGetProcAddressProc) {
  OwnHostStart();
  return &OwnHostGetProc;
}
