// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

template <KAP_T_MT::TKAPName Name>
struct VersionInterface
    : KAP_T_MT::TKAPInterface<
          Name,
          // Appends a dictionary with the component's name. [exclusive]
          KAP_T_MT::TKAPMethod<"Sign", "VersionSignProc", void(POSArray* list)>,
          // Whether the host has all of the progress interface that the component's client knows.
          // [any thread]
          KAP_T_MT::TKAPMethod<"HasProgress", "VersionHasProgressProc", bool()>> {};
