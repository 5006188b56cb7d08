// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Containers: reference-counted records that hold one or more named instances, typed by the
// interfaces registered for them. Every handle of a property object, a stream or a validator is
// one. See KAPHostInterfaces.h for the conventions and KAPContainer.h for the classes.
//
//   KAPContainer* container = nullptr;
//   NewFullContainer(&container, object, instanceName, interfaceName, &DeleteObject);
//   ...                  // other components look up the object's methods with GetMethod
//   Release(container);  // the last reference: DeleteObject(object)
//
// An instance name says which implementation an object belongs to ("POSObjectImpl"), an interface
// name under which interface of the binder its methods are registered ("POSObjectInterface").
//
// Two words of a container record are public: the primary instance, at the offset that
// GetOffsetToPrimaryInstance returns, and its signature, in the word after it. The signature is the
// text pointer of the instance name's atom, null for a container without one. All containers of one
// signature have the same methods, so clients look methods up once per signature.
struct KAPContainerInterface
    : TKAPInterface<
          "KAPContainerInterface",
          // A container with `instance` as its primary one: one reference. The last release passes
          // the instance to `deleteInstance`, which may be null. On an error the instance stays the
          // caller's. [any thread]
          TKAPMethod<"NewFullContainer", "KAPNewFullContainerV5Proc",
                     KAPError*(KAPContainer** out, void* instance, KAPStringAtom* instanceName,
                               KAPStringAtom* interfaceName, KAPDeleteProc deleteInstance),
                     KAPMakes(KAPResource::kContainer, KAPFault::kContainer)>,
          // An empty container: one reference. The first registered instance becomes the primary
          // one. [any thread]
          TKAPMethod<"NewContainer", "KAPNewContainerV2Proc", KAPError*(KAPContainer** out),
                     KAPMakes(KAPResource::kContainer, KAPFault::kContainer)>,
          // A container with the same instances and interfaces, which holds a reference to
          // `container`: one reference. [any thread]
          TKAPMethod<"CloneContainer", "KAPCloneContainerProc",
                     KAPError*(KAPContainer** out, KAPContainer* container),
                     KAPMakes(KAPResource::kContainer, KAPFault::kContainer)>,
          // Adds one reference. False: no reference was added, because the handle is null or the
          // container is being destroyed. [any thread]
          TKAPMethod<"AddRef", "KAPAddRefContainerV2Proc", bool(KAPContainer* container),
                     KAPFails(KAPFault::kReference)>,
          // Releases one reference; null is ignored. The last release deletes the instances.
          // [any thread]
          TKAPMethod<"Release", "KAPReleaseContainerProc", void(KAPContainer* container),
                     kKAPReleases>,
          // Releases one reference without deleting the container, even if it was the last one.
          // [any thread]
          TKAPMethod<"DecrementWithoutDelete", "KAPDecrementWithoutDeleteProc",
                     void(KAPContainer* container), kKAPReleases>,
          // Deletes a container that has no reference; otherwise does nothing. [any thread]
          TKAPMethod<"DeleteUnownedContainer", "KAPDeleteUnownedContainerProc",
                     void(KAPContainer* container), kKAPReleases>,
          // Adds an interface for the instance of that name. GetMethod searches the interface
          // registered last first. Only the container's maker calls it, before others use the
          // container. [exclusive]
          TKAPMethod<"RegisterInterface", "KAPRegisterInterfaceV2Proc",
                     KAPError*(KAPContainer* container, KAPStringAtom* instanceName,
                               KAPStringAtom* interfaceName),
                     KAPFails(KAPFault::kInstance)>,
          // Adds an instance under a name of its own. On an error the instance stays the caller's.
          // [exclusive]
          TKAPMethod<"RegisterInstance", "KAPRegisterInstanceV2Proc",
                     KAPError*(KAPContainer* container, KAPStringAtom* instanceName, void* instance,
                               KAPDeleteProc deleteInstance),
                     KAPFails(KAPFault::kInstance)>,
          // The procedure registered under these names for one of the container's interfaces; null
          // and no error when there is none. `optional` nonzero: the caller can do without the
          // procedure. [any thread]
          TKAPMethod<"GetMethod", "KAPGetMethodV3Proc",
                     KAPError*(void** out, KAPContainer* container, KAPStringAtom* methodName,
                               KAPStringAtom* procName, int optional),
                     KAPFails(KAPFault::kMethod)>,
          // As GetMethod, but searches only the interfaces registered before those of
          // `instanceName`: what the instance overrides. [any thread]
          TKAPMethod<"GetParentMethod", "KAPGetParentMethodV2Proc",
                     KAPError*(void** out, KAPContainer* container, KAPStringAtom* instanceName,
                               KAPStringAtom* methodName, KAPStringAtom* procName),
                     KAPFails(KAPFault::kMethod)>,
          // The instance of that name, borrowed; null when there is none, or when the call fails.
          // [any thread]
          TKAPMethod<"GetInstance", "KAPGetInstanceProc",
                     void*(KAPContainer* container, KAPStringAtom* instanceName),
                     KAPFails(KAPFault::kInstance)>,
          // As GetInstance, but distinguishes a failure: null and no error when the container has
          // no instance of that name. [any thread]
          TKAPMethod<"NGetInstance", "KAPNGetInstanceProc",
                     KAPError*(void** out, KAPContainer* container, KAPStringAtom* instanceName),
                     KAPFails(KAPFault::kInstance)>,
          // The name of the primary instance: a new reference; null when it has none. [any thread]
          TKAPMethod<"GetSignature", "KAPGetSignatureProc",
                     KAPStringAtom*(KAPContainer* container)>,
          // The address of the reference count, borrowed while the container lives. For debugging:
          // the count may change at any time. [any thread]
          TKAPMethod<"DebugGetRefCountAddr", "KAPGetRefCountAddrProc",
                     const int*(KAPContainer* container)>,
          // The offset of the primary instance within a container record, in bytes; the same for
          // all containers of a host. [any thread]
          TKAPMethod<"GetOffsetToPrimaryInstance", "KAPGetOffsetToPrimaryInstProc", long()>> {};

}  // namespace KAP_T_MT
