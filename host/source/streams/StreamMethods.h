// SPDX-License-Identifier: MIT
#pragma once

#include "binder/Binder.h"

namespace KAPHost {

// Registers the methods of the host's streams, for each capability under the interface name that
// its containers carry.
void RegisterStreamMethods(Binder& binder);

}  // namespace KAPHost
