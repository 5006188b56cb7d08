// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

struct NoteInterface
    : KAP_T_MT::TKAPInterface<
          "NoteInterface", KAP_T_MT::TKAPMethod<"Length", "NoteLengthProc", int(const char* text)>,
          KAP_T_MT::TKAPMethod<"Make", "NoteMakeProc",
                               KAPError*(KAPContainer** out, KAPStringAtom* name)>,
          KAP_T_MT::TKAPMethod<"Fill", "NoteFillProc", int(char* buffer, int size)>> {};
