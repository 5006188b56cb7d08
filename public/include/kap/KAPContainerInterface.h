#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Containers: reference-counted records that hold one or more instances (objects of components)
// under names, typed by the interfaces registered for them. Every handle of a property object, a
// stream or a validator is one. See KAPHostInterfaces.h for the conventions.
//
//   KAPContainer* container = nullptr;
//   NewFullContainer(&container, object, instanceName, interfaceName, &DeleteObject);
//   ...                  // other components find the methods by GetMethod
//   Release(container);  // the last reference: DeleteObject(object)
//
// A container record is readable in place: at the offset that GetOffsetToPrimaryInstance returns
// stand two words, the primary instance and its signature, the text pointer of the instance name's
// atom (null: no signature).
struct KAPContainerInterface
    : TKAPInterface<
          "KAPContainerInterface",
          // A container with `instance` as its primary one: one reference. `deleteInstance` (may be
          // null) gets the instance when the last reference goes. On an error the instance stays
          // the caller's. The names are borrowed. [any thread]
          TKAPMethod<"NewFullContainer", "KAPNewFullContainerV5Proc",
                     KAPError*(KAPContainer** out, void* instance, KAPStringAtom* instanceName,
                               KAPStringAtom* interfaceName, KAPDeleteProc deleteInstance),
                     KAPMakes(KAPResource::kContainer, KAPFault::kContainer)>,
          // An empty container: one reference. The first instance registered becomes the primary
          // one. [any thread]
          TKAPMethod<"NewContainer", "KAPNewContainerV2Proc", KAPError*(KAPContainer** out),
                     KAPMakes(KAPResource::kContainer, KAPFault::kContainer)>,
          // A container that shows the same instances and interfaces and keeps `container` alive:
          // one reference. [any thread]
          TKAPMethod<"CloneContainer", "KAPCloneContainerProc",
                     KAPError*(KAPContainer** out, KAPContainer* container),
                     KAPMakes(KAPResource::kContainer, KAPFault::kContainer)>,
          // Adds one reference. False: refused, no reference was added (null, or a container that
          // is being destroyed). [any thread]
          TKAPMethod<"AddRef", "KAPAddRefContainerV2Proc", bool(KAPContainer* container),
                     KAPFails(KAPFault::kReference)>,
          // Releases one reference; null is ignored. The last one deletes the instances.
          // [any thread]
          TKAPMethod<"Release", "KAPReleaseContainerProc", void(KAPContainer* container),
                     kKAPReleases>,
          // Gives up one reference and lets the container live, even with none. [any thread]
          TKAPMethod<"DecrementWithoutDelete", "KAPDecrementWithoutDeleteProc",
                     void(KAPContainer* container), kKAPReleases>,
          // Destroys the container when it has no reference, else does nothing. [any thread]
          TKAPMethod<"DeleteUnownedContainer", "KAPDeleteUnownedContainerProc",
                     void(KAPContainer* container), kKAPReleases>,
          // Adds an interface for the instance of that name. Interfaces registered later come first
          // in GetMethod. Only the container's maker calls it, before others use the container.
          // [exclusive]
          TKAPMethod<"RegisterInterface", "KAPRegisterInterfaceV2Proc",
                     KAPError*(KAPContainer* container, KAPStringAtom* instanceName,
                               KAPStringAtom* interfaceName),
                     KAPFails(KAPFault::kInstance)>,
          // Adds an instance under a name of its own. On an error it stays the caller's.
          // [exclusive]
          TKAPMethod<"RegisterInstance", "KAPRegisterInstanceV2Proc",
                     KAPError*(KAPContainer* container, KAPStringAtom* instanceName, void* instance,
                               KAPDeleteProc deleteInstance),
                     KAPFails(KAPFault::kInstance)>,
          // The procedure that is registered under these names for one of the container's
          // interfaces; null and no error when there is none. `optional` nonzero: the caller can do
          // without it. [any thread]
          TKAPMethod<"GetMethod", "KAPGetMethodV3Proc",
                     KAPError*(void** out, KAPContainer* container, KAPStringAtom* methodName,
                               KAPStringAtom* procName, int optional),
                     KAPFails(KAPFault::kMethod)>,
          // The same among the interfaces that were registered before those of `instanceName`: what
          // they cover up. [any thread]
          TKAPMethod<"GetParentMethod", "KAPGetParentMethodV2Proc",
                     KAPError*(void** out, KAPContainer* container, KAPStringAtom* instanceName,
                               KAPStringAtom* methodName, KAPStringAtom* procName),
                     KAPFails(KAPFault::kMethod)>,
          // The instance of that name, borrowed; null when there is none. [any thread]
          TKAPMethod<"GetInstance", "KAPGetInstanceProc",
                     void*(KAPContainer* container, KAPStringAtom* instanceName),
                     KAPFails(KAPFault::kInstance)>,
          // The same with an error for a call that fails: null and no error when the container has
          // no instance of that name. [any thread]
          TKAPMethod<"NGetInstance", "KAPNGetInstanceProc",
                     KAPError*(void** out, KAPContainer* container, KAPStringAtom* instanceName),
                     KAPFails(KAPFault::kInstance)>,
          // The primary instance's name: a new reference; null when it has none. [any thread]
          TKAPMethod<"GetSignature", "KAPGetSignatureProc",
                     KAPStringAtom*(KAPContainer* container)>,
          // The reference count, borrowed for as long as the container lives. For debugging: it may
          // change at any time. [any thread]
          TKAPMethod<"DebugGetRefCountAddr", "KAPGetRefCountAddrProc",
                     const int*(KAPContainer* container)>,
          // The offset in bytes of the primary instance within a container record; the same for all
          // containers of a host. [any thread]
          TKAPMethod<"GetOffsetToPrimaryInstance", "KAPGetOffsetToPrimaryInstProc", long()>> {};

}  // namespace KAP_T_MT
