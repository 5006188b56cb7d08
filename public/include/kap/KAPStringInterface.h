// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// String atoms: interned 8-bit strings with reference counts. Equal strings share one atom, so both
// atoms and text pointers compare by address. Keys, file names and the names of interfaces,
// instances and methods are atoms. See KAPHostInterfaces.h for the conventions and KAPStringAtom.h
// for the class.
struct KAPStringInterface
    : TKAPInterface<
          "KAPStringInterface",
          // The atom of `text`: one new reference. Null: out of memory, or `text` is null.
          // [any thread]
          TKAPMethod<"NewStringAtom", "KAPNewStringAtomProc", KAPStringAtom*(const char* text),
                     KAPMakes(KAPResource::kAtom, KAPFault::kAtom)>,
          // Releases one reference; null is ignored. [any thread]
          TKAPMethod<"DeleteStringAtom", "KAPDeleteStringAtomProc", void(KAPStringAtom* atom),
                     kKAPReleases>,
          // The text, borrowed: it lives as long as the atom. Equal strings have the same pointer.
          // Null for null. [any thread]
          TKAPMethod<"GetCString", "KAPGetCStringProc", const char*(KAPStringAtom* atom)>,
          // Adds one reference; null is ignored. [any thread]
          TKAPMethod<"AddRef", "KAPAddRefStringAtomProc", void(KAPStringAtom* atom)>> {};

}  // namespace KAP_T_MT
