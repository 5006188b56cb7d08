#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// String atoms: interned 8-bit texts with reference counts. Equal texts share one atom, so atoms
// and their text pointers compare by address. See KAPHostInterfaces.h for the conventions.
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
          // The text, borrowed: it lives as long as the atom. Equal texts: the same pointer. Null
          // for null. [any thread]
          TKAPMethod<"GetCString", "KAPGetCStringProc", const char*(KAPStringAtom* atom)>,
          // Adds one reference; null is ignored. [any thread]
          TKAPMethod<"AddRef", "KAPAddRefStringAtomProc", void(KAPStringAtom* atom)>> {};

}  // namespace KAP_T_MT
