// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The procedures that a component hands over with a progress object of its own, `client`. Each
// returns null or a new error reference.
using KAPProgressUpdateProc = KAPError* (*)(void* client, float fraction, const char* text,
                                            int flag);
using KAPProgressDeleteProc = KAPError* (*)(void* client);

// Receivers of progress: one side updates its progress, the other side shows it. See
// KAPHostInterfaces.h for the conventions and KAPProgress.h for the classes.
struct KAPProgressInterface
    : TKAPInterface<
          "KAPProgressInterface",
          // A progress object that ignores its updates: one reference. Null: out of memory.
          // [any thread]
          TKAPMethod<"NewNullProgress", "KAPProgressNewNullProgressProc", KAPProgress*(),
                     KAPMakes(KAPResource::kProgress, KAPFault::kProgress)>,
          // A progress object that forwards to `client`: one reference. The last release passes the
          // client to `deleteClient`. Null: out of memory or an argument is null; the client stays
          // the caller's. [any thread]
          TKAPMethod<"NewClientProgress", "KAPProgressNewClientProgressProc",
                     KAPProgress*(void* client, KAPProgressUpdateProc update,
                                  KAPProgressDeleteProc deleteClient),
                     KAPMakes(KAPResource::kProgress, KAPFault::kProgress)>,
          // Adds one reference; null is ignored. [any thread]
          TKAPMethod<"AddRef", "KAPProgressAddRefProc", void(KAPProgress* progress)>,
          // Releases one reference; null is ignored. [any thread]
          TKAPMethod<"Release", "KAPProgressReleaseProc", void(KAPProgress* progress),
                     kKAPReleases>,
          // Sets the progress: `fraction` (0 to 1) of the work is done. `text` may be null; both
          // sides agree on the meaning of `flag`. An error asks the caller to stop. [exclusive]
          TKAPMethod<"Update", "KAPProgressUpdateProc",
                     KAPError*(KAPProgress* progress, float fraction, const char* text,
                               int flag)>> {};

}  // namespace KAP_T_MT
