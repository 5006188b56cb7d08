// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPTypes.h"

// What a plug-in for `kapcheck host --host PLUGIN` exports: one function that returns the callback
// of the host to check. Called once, in the process that runs the checks.
//
//   extern "C" KAPGetProcAddressProc KAPCheckHost(KAPGetProcAddressProc reference);
//
// `reference` is the callback of the reference host. A host of its own ignores it. A layer over the
// reference host replaces what it likes: components then find the procedures of the layer.
using KAPCheckHostProc = KAPGetProcAddressProc (*)(KAPGetProcAddressProc reference);
