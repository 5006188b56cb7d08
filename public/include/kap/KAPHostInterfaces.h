#pragma once

#include "kap/KAPCacheInterface.h"
#include "kap/KAPFilterInterface.h"
#include "kap/KAPInterface.h"
#include "kap/KAPProgressInterface.h"
#include "kap/KAPSharedBuffInterface.h"
#include "kap/KAPStreamInterfaces.h"

// The host interfaces that the client runtime uses, one declaration each: the core below, the
// others in headers of their own. The binder's own procedures are in KAPBinder.h.
//
// Conventions of every procedure: result places come first, then the object acted on, then the
// rest. A `KAPError*` result is null on success, else a new reference for the caller, and the
// result places are then null or 0. Handles passed in are borrowed for the call; a returned handle
// carries one new reference for the caller. Nothing throws.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

struct KAPStringInterface
    : TKAPInterface<
          "KAPStringInterface",
          // A new reference to the atom of `text`; null when out of memory.
          TKAPMethod<"NewStringAtom", "KAPNewStringAtomProc", KAPStringAtom*(const char* text)>,
          // Releases one reference.
          TKAPMethod<"DeleteStringAtom", "KAPDeleteStringAtomProc", void(KAPStringAtom* atom)>,
          // Equal texts: the same pointer. The text lives as long as the atom.
          TKAPMethod<"GetCString", "KAPGetCStringProc", const char*(KAPStringAtom* atom)>,
          TKAPMethod<"AddRef", "KAPAddRefStringAtomProc", void(KAPStringAtom* atom)>> {};

struct KAPErrorInterface
    : TKAPInterface<
          "KAPErrorInterface",
          // Null when out of memory. The error keeps its message and component atoms alive as long
          // as itself.
          TKAPMethod<"NewError", "KAPNewErrorProc",
                     KAPError*(const char* message, const char* component, long code,
                               void* clientData, KAPDeleteProc freeClientData)>,
          // Core errors are never destroyed; counting their references changes nothing. 0: unknown
          // error, 1: out of memory.
          TKAPMethod<"GetCoreError", "KAPGetCoreErrorProc", KAPError*(int id)>,
          TKAPMethod<"AddRef", "KAPErrorAddRefProcV2", void(KAPError* error)>,
          TKAPMethod<"Release", "KAPErrorReleaseProc", void(KAPError* error)>,
          TKAPMethod<"GetErrorMessage", "KAPErrorGetMessageProc", KAPStringAtom*(KAPError* error)>,
          TKAPMethod<"GetComponent", "KAPErrorGetComponentProc", KAPStringAtom*(KAPError* error)>,
          TKAPMethod<"GetID", "KAPErrorGetIDProc", long(KAPError* error)>,
          TKAPMethod<"GetErrorInfo", "KAPGetErrorInfoProc", void*(KAPError* error)>> {};

struct KAPMemoryInterface
    : TKAPInterface<
          "KAPMemoryInterface",
          // 16-byte aligned; null when there is none. Nobody asks for 0 bytes.
          TKAPMethod<"Alloc", "KAPMemAllocProc", void*(std::size_t size)>,
          TKAPMethod<"Realloc", "KAPMemReallocProc", void*(void* block, std::size_t size)>,
          TKAPMethod<"Free", "KAPMemFreeProc", void(void* block)>,
          TKAPMethod<"GetBlockSize", "KAPMemGetBlockSizeProc", std::size_t(void* block)>> {};

struct KAPContainerInterface
    : TKAPInterface<
          "KAPContainerInterface",
          // A container with `instance` as its primary one. On an error the instance stays the
          // caller's.
          TKAPMethod<"NewFullContainer", "KAPNewFullContainerV5Proc",
                     KAPError*(KAPContainer** out, void* instance, KAPStringAtom* instanceName,
                               KAPStringAtom* interfaceName, KAPDeleteProc deleteInstance)>,
          TKAPMethod<"NewContainer", "KAPNewContainerV2Proc", KAPError*(KAPContainer** out)>,
          TKAPMethod<"CloneContainer", "KAPCloneContainerProc",
                     KAPError*(KAPContainer** out, KAPContainer* container)>,
          // False: refused, no reference was added.
          TKAPMethod<"AddRef", "KAPAddRefContainerV2Proc", bool(KAPContainer* container)>,
          // The last release deletes the instances.
          TKAPMethod<"Release", "KAPReleaseContainerProc", void(KAPContainer* container)>,
          TKAPMethod<"DecrementWithoutDelete", "KAPDecrementWithoutDeleteProc",
                     void(KAPContainer* container)>,
          // Destroys the container when no reference is left.
          TKAPMethod<"DeleteUnownedContainer", "KAPDeleteUnownedContainerProc",
                     void(KAPContainer* container)>,
          TKAPMethod<"RegisterInterface", "KAPRegisterInterfaceV2Proc",
                     KAPError*(KAPContainer* container, KAPStringAtom* instanceName,
                               KAPStringAtom* interfaceName)>,
          TKAPMethod<"RegisterInstance", "KAPRegisterInstanceV2Proc",
                     KAPError*(KAPContainer* container, KAPStringAtom* instanceName, void* instance,
                               KAPDeleteProc deleteInstance)>,
          // What is registered for the container's interfaces under these names; null and no error
          // when there is none.
          TKAPMethod<"GetMethod", "KAPGetMethodV3Proc",
                     KAPError*(void** out, KAPContainer* container, KAPStringAtom* methodName,
                               KAPStringAtom* procName, int optional)>,
          TKAPMethod<"GetParentMethod", "KAPGetParentMethodV2Proc",
                     KAPError*(void** out, KAPContainer* container, KAPStringAtom* instanceName,
                               KAPStringAtom* methodName, KAPStringAtom* procName)>,
          TKAPMethod<"GetInstance", "KAPGetInstanceProc",
                     void*(KAPContainer* container, KAPStringAtom* instanceName)>,
          // Null and no error when the container has no instance of that name.
          TKAPMethod<"NGetInstance", "KAPNGetInstanceProc",
                     KAPError*(void** out, KAPContainer* container, KAPStringAtom* instanceName)>,
          TKAPMethod<"GetSignature", "KAPGetSignatureProc",
                     KAPStringAtom*(KAPContainer* container)>,
          TKAPMethod<"DebugGetRefCountAddr", "KAPGetRefCountAddrProc",
                     const int*(KAPContainer* container)>,
          // Where a container record keeps its primary instance and, in the word behind it, its
          // signature.
          TKAPMethod<"GetOffsetToPrimaryInstance", "KAPGetOffsetToPrimaryInstProc", long()>> {};

}  // namespace KAP_T_MT
