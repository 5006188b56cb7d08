// SPDX-License-Identifier: MIT
#pragma once

#include "checks/Ledger.h"
#include "checks/ObservedCall.h"

namespace KAPHost {

// How the references of components change with a call: a procedure that returns a handle gives a
// reference to its caller, "AddRef" and the releases of the host count. Both throw std::bad_alloc.

// Before the call. The handle of which components now have fewer references than none, or null.
const void* CountReleases(Ledger& ledger, const ObservedCall& call);
// After it. A refused call has counted nothing but its result.
void CountResults(Ledger& ledger, const ObservedCall& call, const WatchedValue& result,
                  bool isRefused);

}  // namespace KAPHost
