#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// What a component hands over together with a progress object of its own, `client`. Each gives null
// or a new error reference.
using KAPProgressUpdateProc = KAPError* (*)(void* client, float fraction, const char* text,
                                            int flag);
using KAPProgressDeleteProc = KAPError* (*)(void* client);

// See KAPHostInterfaces.h for the conventions.
struct KAPProgressInterface
    : TKAPInterface<"KAPProgressInterface",
                    TKAPMethod<"NewNullProgress", "KAPProgressNewNullProgressProc", KAPProgress*()>,
                    // Null: the client object stays the caller's.
                    TKAPMethod<"NewClientProgress", "KAPProgressNewClientProgressProc",
                               KAPProgress*(void* client, KAPProgressUpdateProc update,
                                            KAPProgressDeleteProc deleteClient)>,
                    TKAPMethod<"AddRef", "KAPProgressAddRefProc", void(KAPProgress* progress)>,
                    TKAPMethod<"Release", "KAPProgressReleaseProc", void(KAPProgress* progress)>,
                    TKAPMethod<"Update", "KAPProgressUpdateProc",
                               KAPError*(KAPProgress* progress, float fraction, const char* text,
                                         int flag)>> {};

}  // namespace KAP_T_MT
