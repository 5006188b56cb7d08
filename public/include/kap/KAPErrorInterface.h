// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Errors: a message, the component it comes from, a code and client data, with a reference count.
// An error does not change after it is made, so any thread may read it. See KAPHostInterfaces.h for
// the conventions and KAPError.h for the exception class.
struct KAPErrorInterface
    : TKAPInterface<
          "KAPErrorInterface",
          // A new error: one reference. The host copies both strings (null: none), and the error
          // keeps the atoms of its strings alive as long as itself. The last release passes
          // `clientData` to `freeClientData`, which may be null. Null: out of memory; the client
          // data stays the caller's. [any thread]
          TKAPMethod<"NewError", "KAPNewErrorProc",
                     KAPError*(const char* message, const char* component, long code,
                               void* clientData, KAPDeleteProc freeClientData),
                     KAPMakes(KAPResource::kError, KAPFault::kError)>,
          // A core error of the host: 0 is the unknown error, 1 the memory error. Core errors are
          // never destroyed; AddRef and Release accept them and change nothing. [any thread]
          TKAPMethod<"GetCoreError", "KAPGetCoreErrorProc", KAPError*(int id)>,
          // Adds one reference; null is ignored. [any thread]
          TKAPMethod<"AddRef", "KAPErrorAddRefProcV2", void(KAPError* error), kKAPReleases>,
          // Releases one reference; null is ignored. [any thread]
          TKAPMethod<"Release", "KAPErrorReleaseProc", void(KAPError* error), kKAPReleases>,
          // The message: a new reference to the error's atom, or null when the error has none. The
          // text lives as long as the error. [any thread]
          TKAPMethod<"GetErrorMessage", "KAPErrorGetMessageProc", KAPStringAtom*(KAPError* error)>,
          // The component: a new reference to the error's atom, or null when the error has none.
          // The text lives as long as the error. [any thread]
          TKAPMethod<"GetComponent", "KAPErrorGetComponentProc", KAPStringAtom*(KAPError* error)>,
          // The code; 0 for null. [any thread]
          TKAPMethod<"GetID", "KAPErrorGetIDProc", long(KAPError* error)>,
          // The client data, borrowed; null when the error has none. [any thread]
          TKAPMethod<"GetErrorInfo", "KAPGetErrorInfoProc", void*(KAPError* error)>> {};

}  // namespace KAP_T_MT
