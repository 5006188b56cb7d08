// SPDX-License-Identifier: MIT
#pragma once

// clang-format off
// NOLINTBEGIN(modernize-*): C++ programs may include it, but it is C

/* The interfaces of a host and of libKAPUtils.so for C11, and for languages that import C headers.
 * In C it needs no other file of this project. scripts/make_c_header makes it from the C++
 * declarations; the contracts are changed there.
 *
 * A component is a shared library with three functions, named after it:
 *
 *   int TotalsInitialize(KAPGetProcAddressProc getProc);  // nonzero: initialised
 *   void TotalsTerminate(void);
 *   int TotalsGetVersion(void);
 *
 * For each interface there is a structure of its procedures, in slot order; the comment over a
 * procedure is its contract. The load function fills the structure through the host's callback:
 *
 *   POSArrayInterfaceProcs arrays;
 *   if (!POSArrayInterfaceLoad(&arrays, getProc)) ...  // the host lacks a procedure
 *   POSArray* const list = arrays.NewPOSArray();
 *
 * A structure is up to date until the counter moves that "KAPGetUnregisterCountAddr" of
 * KAPBinderInterface leads to. Compare the counter before each use, and load again when it differs.
 *
 * The methods of a stream, a data store, or a property object of another component are looked up
 * through the handle: KAPSimpleStreamInterfaceLoadFrom(&methods, &containers, &strings, &errors,
 * stream). All containers with equal signatures have the same methods.
 *
 * The register function registers a component's own procedures from such a structure. A component
 * declares an interface of its own as this header does (..._NAME, ..._METHODS and ...Procs), and
 * gets the functions by KAP_TABLE_FUNCTIONS, which also checks that the methods and the structure
 * have the same names in the same order. Neither an exception nor a longjmp may leave a procedure.
 *
 * A C++ program may include the header as well, and call a component in C through the component's
 * own header. The kinds and seek origins are then those of the C++ headers. TKAPInterfaceClient of
 * KAP.h does more: it follows the counter by itself.
 *
 * Each contract ends with a thread tag:
 *
 *   [any thread]      no restriction
 *   [shared read]     any thread, together with other reads of the same object, but not while the
 *                     object changes
 *   [exclusive]       any thread; nothing else may use the same object at the same time
 *   [binding thread]  the thread that initialises and terminates the component */

#include <assert.h>
#include <stdbool.h>
#include <stddef.h>
#include <string.h>

/* The version, as KAPUtilsVersion.h has it. */
#define KAPUTILS_VERSION_MAJOR 1
#define KAPUTILS_VERSION_MINOR 1
#define KAPUTILS_VERSION_PATCH 1

/* One number that grows from version to version, a byte for each part: 0x10101 is 1.1.1. */
#define KAPUTILS_VERSION \
  (KAPUTILS_VERSION_MAJOR * 0x10000 + KAPUTILS_VERSION_MINOR * 0x100 + KAPUTILS_VERSION_PATCH)

#ifdef __cplusplus
#include "kap/KAPStreamInterfaces.h"
#include "kap/KAPTypes.h"
#include "pos/POSKinds.h"
#else

/* Opaque handles: components neither read nor write what they point to. */

/* an interned, reference-counted 8-bit string */
typedef struct KAPStringAtom KAPStringAtom;
/* a reference-counted error: message, component, code */
typedef struct KAPError KAPError;
/* a reference-counted record that holds one or more instances */
typedef struct KAPContainer KAPContainer;
/* a reference-counted block of bytes */
typedef struct KAPSharedBuffer KAPSharedBuffer;
/* the reference-counted identity of a cached item */
typedef struct KAPCacheID KAPCacheID;
/* a reference-counted set of identities */
typedef struct KAPCacheSet KAPCacheSet;
/* a purge in progress */
typedef struct KAPCachePurge KAPCachePurge;
/* a reference-counted receiver of bytes */
typedef struct KAPDataSink KAPDataSink;
/* a reference-counted receiver of progress */
typedef struct KAPProgress KAPProgress;
/* a sink with a target; accepted wherever a sink is */
typedef KAPDataSink KAPFilter;

/* Streams, property objects and the library's other objects are containers. The aliases document
 * which kind a procedure expects; the compiler does not distinguish them, so every procedure
 * checks. */
typedef KAPContainer KAPSimpleStream;
typedef KAPContainer KAPRewindableStream;
typedef KAPContainer KAPPositionableStream;
typedef KAPContainer KAPDataStore;
typedef KAPContainer KAPDataBlockStream;
typedef KAPContainer POSObject;
typedef KAPContainer POSNumber;
typedef KAPContainer POSString;
typedef KAPContainer POSUnicodeString;
typedef KAPContainer POSBinData;
typedef KAPContainer POSRawPointer;
typedef KAPContainer POSArray;
typedef KAPContainer POSDict;
typedef KAPContainer POSDictIterator;
typedef KAPContainer POSStreamer;
typedef KAPContainer POSValidator;
typedef KAPContainer KAPUtilsDir;

/* Releases what `data` points to. Called once, on any thread; must not throw. */
typedef void (*KAPDeleteProc)(void* data);

/* A run of text that a data store lends. The receiver calls `release` once with `clientData` when
 * it no longer needs the text; a null `release` means that there is nothing to call. */
typedef struct KAPDataBlock {
  /* Borrowed until the release. */
  const char* text;
  size_t size;  /* in bytes; the text has no terminator */
  /* Passed to `release`; of no meaning to the receiver. */
  void* clientData;
  /* May be null. */
  void (*release)(void* clientData);
} KAPDataBlock;

/* The one callback through which a component reaches the binder. Returns the address of the
 * procedure registered under the three names, or null when there is none. [any thread] */
typedef void* (*KAPGetProcAddressProc)(const char* interfaceName, const char* methodName,
    const char* procName);

#endif

/* What "GetType" returns. The numbers are part of the interface: they never change, and a new kind
 * takes the next one. */
#ifdef __cplusplus
using KAP_T_MT::POSType;
using KAP_T_MT::kPOSNumber;
using KAP_T_MT::kPOSString;
using KAP_T_MT::kPOSUnicodeString;
using KAP_T_MT::kPOSBinData;
using KAP_T_MT::kPOSRawPointer;
using KAP_T_MT::kPOSArray;
using KAP_T_MT::kPOSDict;
#else
enum POSType {
  kPOSNumber = 1, kPOSString = 2, kPOSUnicodeString = 3, kPOSBinData = 4, kPOSRawPointer = 5,
  kPOSArray = 6, kPOSDict = 7
};
#endif

/* The interfaces that a host provides, one header each, and the list of them. To write a host,
 * implement these; to use one, include the header of the interface or, better, its wrapper classes.
 *
 * Every procedure follows these conventions:
 *
 *   1. Plain C calls; nothing throws. `bool` is one byte, `int` 32 bits, `long` and `size_t` 64.
 *   2. Result places come first, then the object acted on, then the other arguments.
 *   3. A `KAPError*` result is null on success, else a new reference for the caller. After an error
 *      the result places are null or 0. A null result place is an error, and nothing is done.
 *   4. Handles and atoms passed in are borrowed for the call. A returned handle or atom carries one
 *      new reference for the caller, unless its contract says "borrowed".
 *   5. A `const char*` is a zero-terminated string of bytes. A returned string lives as long as the
 *      object it belongs to.
 *   6. Each contract ends with a thread tag; the introduction explains the tags.
 *   7. Handles are opaque, except for two words of a container record (see
 * KAPContainerInterface). */

/* The binder's own procedures. They are the first that a component fetches, with the callback it
 * receives from the host. Each method name equals its procedure name, deliberately: these
 * procedures have no revisions. */
#define KAPBinderInterface_NAME "KAP"
#define KAPBinderInterface_METHODS(X) \
  X(KAPRegisterProcAddress, "KAPRegisterProcAddress") \
  X(KAPReportError, "KAPReportError") \
  X(KAPUnregisterInterface, "KAPUnregisterInterface") \
  X(KAPGetUnregisterCountAddr, "KAPGetUnregisterCountAddr") \
  X(KAPIsMultiThreaded, "KAPIsMultiThreaded")
typedef struct KAPBinderInterfaceProcs {
  /* Registers `proc` under the three names, replacing a procedure that is already there. The binder
   * copies the names. Nonzero: registered. 0: an argument is null, or the host fails.
   * [any thread] */
  int (*KAPRegisterProcAddress)(const char* interfaceName, const char* methodName,
      const char* procName, void* proc);
  /* Reports a failure that the component cannot return to its caller. The host copies the message,
   * which is never null. [any thread] */
  void (*KAPReportError)(const char* message);
  /* Removes every procedure of the interface. If there were any, the unregister counter grows by
   * one and callers reload their tables before the next call. [any thread] */
  void (*KAPUnregisterInterface)(const char* interfaceName);
  /* The address of the unregister counter, borrowed for the life of the process. The host
   * increments the counter atomically; components only read it. [any thread] */
  unsigned long* (*KAPGetUnregisterCountAddr)(void);
  /* Nonzero: the host calls components from several threads. [any thread] */
  int (*KAPIsMultiThreaded)(void);
} KAPBinderInterfaceProcs;

/* String atoms: interned 8-bit strings with reference counts. Equal strings share one atom, so both
 * atoms and text pointers compare by address. Keys, file names and the names of interfaces,
 * instances and methods are atoms. See the conventions above. */
#define KAPStringInterface_NAME "KAPStringInterface"
#define KAPStringInterface_METHODS(X) \
  X(NewStringAtom, "KAPNewStringAtomProc") \
  X(DeleteStringAtom, "KAPDeleteStringAtomProc") \
  X(GetCString, "KAPGetCStringProc") \
  X(AddRef, "KAPAddRefStringAtomProc")
typedef struct KAPStringInterfaceProcs {
  /* The atom of `text`: one new reference. Null: out of memory, or `text` is null. [any thread] */
  KAPStringAtom* (*NewStringAtom)(const char* text);
  /* Releases one reference; null is ignored. [any thread] */
  void (*DeleteStringAtom)(KAPStringAtom* atom);
  /* The text, borrowed: it lives as long as the atom. Equal strings have the same pointer. Null for
   * null. [any thread] */
  const char* (*GetCString)(KAPStringAtom* atom);
  /* Adds one reference; null is ignored. [any thread] */
  void (*AddRef)(KAPStringAtom* atom);
} KAPStringInterfaceProcs;

/* Errors: a message, the component it comes from, a code and client data, with a reference count.
 * An error does not change after it is made, so any thread may read it. See the conventions
 * above. */
#define KAPErrorInterface_NAME "KAPErrorInterface"
#define KAPErrorInterface_METHODS(X) \
  X(NewError, "KAPNewErrorProc") \
  X(GetCoreError, "KAPGetCoreErrorProc") \
  X(AddRef, "KAPErrorAddRefProcV2") \
  X(Release, "KAPErrorReleaseProc") \
  X(GetErrorMessage, "KAPErrorGetMessageProc") \
  X(GetComponent, "KAPErrorGetComponentProc") \
  X(GetID, "KAPErrorGetIDProc") \
  X(GetErrorInfo, "KAPGetErrorInfoProc")
typedef struct KAPErrorInterfaceProcs {
  /* A new error: one reference. The host copies both strings (null: none), and the error keeps the
   * atoms of its strings alive as long as itself. The last release passes `clientData` to
   * `freeClientData`, which may be null. Null: out of memory; the client data stays the caller's.
   * [any thread] */
  KAPError* (*NewError)(const char* message, const char* component, long code, void* clientData,
      KAPDeleteProc freeClientData);
  /* A core error of the host: 0 is the unknown error, 1 the memory error. Core errors are never
   * destroyed; AddRef and Release accept them and change nothing. [any thread] */
  KAPError* (*GetCoreError)(int id);
  /* Adds one reference; null is ignored. A no-op after the binding like Release, unlike the AddRef
   * of other interfaces: copying an exception must not throw. [any thread] */
  void (*AddRef)(KAPError* error);
  /* Releases one reference; null is ignored. [any thread] */
  void (*Release)(KAPError* error);
  /* The message: a new reference to the error's atom, or null when the error has none. The text
   * lives as long as the error. [any thread] */
  KAPStringAtom* (*GetErrorMessage)(KAPError* error);
  /* The component: a new reference to the error's atom, or null when the error has none. The text
   * lives as long as the error. [any thread] */
  KAPStringAtom* (*GetComponent)(KAPError* error);
  /* The code; 0 for null. [any thread] */
  long (*GetID)(KAPError* error);
  /* The client data, borrowed; null when the error has none. [any thread] */
  void* (*GetErrorInfo)(KAPError* error);
} KAPErrorInterfaceProcs;

/* Containers: reference-counted records that hold one or more named instances, typed by the
 * interfaces registered for them. Every handle of a property object, a stream or a validator is
 * one. See the conventions above.
 *
 *   KAPContainer* container = NULL;
 *   NewFullContainer(&container, object, instanceName, interfaceName, &DeleteObject);
 *   ...                  // other components look up the object's methods with GetMethod
 *   Release(container);  // the last reference: DeleteObject(object)
 *
 * An instance name says which implementation an object belongs to ("POSObjectImpl"), an interface
 * name under which interface of the binder its methods are registered ("POSObjectInterface").
 *
 * Two words of a container record are public: the primary instance, at the offset that
 * GetOffsetToPrimaryInstance returns, and its signature, in the word after it. The signature is the
 * text pointer of the instance name's atom, null for a container without one. All containers of one
 * signature have the same methods, so clients look methods up once per signature. */
#define KAPContainerInterface_NAME "KAPContainerInterface"
#define KAPContainerInterface_METHODS(X) \
  X(NewFullContainer, "KAPNewFullContainerV5Proc") \
  X(NewContainer, "KAPNewContainerV2Proc") \
  X(CloneContainer, "KAPCloneContainerProc") \
  X(AddRef, "KAPAddRefContainerV2Proc") \
  X(Release, "KAPReleaseContainerProc") \
  X(DecrementWithoutDelete, "KAPDecrementWithoutDeleteProc") \
  X(DeleteUnownedContainer, "KAPDeleteUnownedContainerProc") \
  X(RegisterInterface, "KAPRegisterInterfaceV2Proc") \
  X(RegisterInstance, "KAPRegisterInstanceV2Proc") \
  X(GetMethod, "KAPGetMethodV3Proc") \
  X(GetParentMethod, "KAPGetParentMethodV2Proc") \
  X(GetInstance, "KAPGetInstanceProc") \
  X(NGetInstance, "KAPNGetInstanceProc") \
  X(GetSignature, "KAPGetSignatureProc") \
  X(DebugGetRefCountAddr, "KAPGetRefCountAddrProc") \
  X(GetOffsetToPrimaryInstance, "KAPGetOffsetToPrimaryInstProc")
typedef struct KAPContainerInterfaceProcs {
  /* A container with `instance` as its primary one: one reference. The last release passes the
   * instance to `deleteInstance`, which may be null. On an error the instance stays the caller's.
   * [any thread] */
  KAPError* (*NewFullContainer)(KAPContainer** out, void* instance, KAPStringAtom* instanceName,
      KAPStringAtom* interfaceName, KAPDeleteProc deleteInstance);
  /* An empty container: one reference. The first registered instance becomes the primary one.
   * [any thread] */
  KAPError* (*NewContainer)(KAPContainer** out);
  /* A container with the same instances and interfaces, which holds a reference to `container`: one
   * reference. [any thread] */
  KAPError* (*CloneContainer)(KAPContainer** out, KAPContainer* container);
  /* Adds one reference. False: no reference was added, because the handle is null or the container
   * is being destroyed. [any thread] */
  bool (*AddRef)(KAPContainer* container);
  /* Releases one reference; null is ignored. The last release deletes the instances.
   * [any thread] */
  void (*Release)(KAPContainer* container);
  /* Releases one reference without deleting the container, even if it was the last one.
   * [any thread] */
  void (*DecrementWithoutDelete)(KAPContainer* container);
  /* Deletes a container that has no reference; otherwise does nothing. [any thread] */
  void (*DeleteUnownedContainer)(KAPContainer* container);
  /* Adds an interface for the instance of that name. GetMethod searches the interface registered
   * last first. Only the container's maker calls it, before others use the container.
   * [exclusive] */
  KAPError* (*RegisterInterface)(KAPContainer* container, KAPStringAtom* instanceName,
      KAPStringAtom* interfaceName);
  /* Adds an instance under a name of its own. On an error the instance stays the caller's.
   * [exclusive] */
  KAPError* (*RegisterInstance)(KAPContainer* container, KAPStringAtom* instanceName,
      void* instance, KAPDeleteProc deleteInstance);
  /* The procedure registered under these names for one of the container's interfaces; null and no
   * error when there is none. `optional` nonzero: the caller can do without the procedure.
   * [any thread] */
  KAPError* (*GetMethod)(void** out, KAPContainer* container, KAPStringAtom* methodName,
      KAPStringAtom* procName, int optional);
  /* As GetMethod, but searches only the interfaces registered before those of `instanceName`: what
   * the instance overrides. [any thread] */
  KAPError* (*GetParentMethod)(void** out, KAPContainer* container, KAPStringAtom* instanceName,
      KAPStringAtom* methodName, KAPStringAtom* procName);
  /* The instance of that name, borrowed; null when there is none, or when the call fails.
   * [any thread] */
  void* (*GetInstance)(KAPContainer* container, KAPStringAtom* instanceName);
  /* As GetInstance, but distinguishes a failure: null and no error when the container has no
   * instance of that name. [any thread] */
  KAPError* (*NGetInstance)(void** out, KAPContainer* container, KAPStringAtom* instanceName);
  /* The name of the primary instance: a new reference; null when it has none. [any thread] */
  KAPStringAtom* (*GetSignature)(KAPContainer* container);
  /* The address of the reference count, borrowed while the container lives. For debugging: the
   * count may change at any time. [any thread] */
  const int* (*DebugGetRefCountAddr)(KAPContainer* container);
  /* The offset of the primary instance within a container record, in bytes; the same for all
   * containers of a host. [any thread] */
  long (*GetOffsetToPrimaryInstance)(void);
} KAPContainerInterfaceProcs;

/* Clears the static caches of a component. */
typedef void (*KAPClientPurgeProc)(void);

/* Items that the host may purge when memory is short: untyped pointers, each filed under an
 * identity with its cost in bytes. A marked item is not purged. See the conventions above.
 *
 *   id = NewCacheID();
 *   Add(id, item, cost, &PurgeItem);     // the cache owns the item
 *   if ((item = Attach(id))) {       // null: purged; make it again
 *     ...                                // not purged while it is marked
 *     MarkPurge(id, item);
 *   }
 *   Release(id);                         // the last reference purges the item */
#define KAPCacheInterface_NAME "KAPCacheInterface"
#define KAPCacheInterface_METHODS(X) \
  X(NewCacheID, "KAPCacheNewCacheIDProc") \
  X(AddRef, "KAPCacheAddRefProc") \
  X(Release, "KAPCacheReleaseProc") \
  X(Attach, "KAPCacheAttachProcV2") \
  X(Add, "KAPCacheAddProc") \
  X(UpdateCost, "KAPCacheUpdateCostProc") \
  X(ReturnCost, "KAPCacheReturnCostProc") \
  X(MarkNoPurge, "KAPCacheMarkNoPurgeProcV2") \
  X(MarkPurge, "KAPCacheMarkPurgeProc") \
  X(GetCacheTime, "KAPCacheGetCacheTimeProc") \
  X(CurrentCacheSize, "KAPCurrentCacheSizeProc") \
  X(NewCachePurge, "KAPCacheNewCachePurgeProc") \
  X(PurgeNextBlock, "KAPCachePurgeNextBlockProc") \
  X(DeleteCachePurge, "KAPCacheDeleteCachePurgeProc") \
  X(PurgeAll, "KAPCachePurgeAllProc") \
  X(PurgeAllStaticCaches, "KAPCachePurgeAllStaticCachesProc") \
  X(AddClientPurge, "KAPCacheAddRemoveClientPurgeProcV2") \
  X(RemoveClientPurge, "KAPCacheAddRemoveClientPurgeProcV2") \
  X(NewCacheSet, "KAPCacheNewCacheSetProc") \
  X(AddRefCacheSet, "KAPCacheAddRefCacheSetProc") \
  X(DeleteCacheSet, "KAPCacheDeleteCacheSetProc") \
  X(SearchForID, "KAPCacheSearchForIDProc") \
  X(RemoveID, "KAPCacheRemoveIDProc") \
  X(RemoveIDs, "KAPCacheRemoveIDsProc")
typedef struct KAPCacheInterfaceProcs {
  /* A new identity: one reference. Null: out of memory. [any thread] */
  KAPCacheID* (*NewCacheID)(void);
  /* Adds one reference; null is ignored. [any thread] */
  void (*AddRef)(KAPCacheID* id);
  /* Releases one reference; null is ignored. The last release purges the item. [any thread] */
  void (*Release)(KAPCacheID* id);
  /* The item, borrowed and marked: it is not purged before MarkPurge. Null when it was purged.
   * [any thread] */
  void* (*Attach)(KAPCacheID* id);
  /* Files an unmarked item; a purge passes it to `purgeItem`. False: the identity has an item or
   * the host fails, and the item stays the caller's. [any thread] */
  bool (*Add)(KAPCacheID* id, void* item, size_t cost, KAPDeleteProc purgeItem);
  /* Sets the cost in bytes; an item that was purged is ignored. [any thread] */
  void (*UpdateCost)(KAPCacheID* id, void* item, size_t cost);
  /* The cost in bytes; 0 for an item that was purged. [any thread] */
  size_t (*ReturnCost)(KAPCacheID* id, void* item);
  /* Adds a mark; an item with marks is not purged. False: the item was purged. [any thread] */
  bool (*MarkNoPurge)(KAPCacheID* id, void* item);
  /* Removes one mark. [any thread] */
  void (*MarkPurge)(KAPCacheID* id, void* item);
  /* A counter that grows with every use of the cache. [any thread] */
  unsigned long (*GetCacheTime)(void);
  /* The cost of all items, in bytes. [any thread] */
  size_t (*CurrentCacheSize)(void);
  /* Begins a purge; DeleteCachePurge ends it. Null: out of memory. [any thread] */
  KAPCachePurge* (*NewCachePurge)(void);
  /* Purges the item used longest ago. False: nothing is left to purge. [exclusive] */
  bool (*PurgeNextBlock)(KAPCachePurge* purge);
  /* Ends a purge; null is ignored. [exclusive] */
  void (*DeleteCachePurge)(KAPCachePurge* purge);
  /* Purges every item that is not marked. [any thread] */
  void (*PurgeAll)(void);
  /* Calls every procedure registered with AddClientPurge, so that all components clear their static
   * caches. [binding thread] */
  void (*PurgeAllStaticCaches)(void);
  /* Registers the procedure that clears a component's static caches. The number is unused; callers
   * pass 1. Deliberate: this method and the next share one procedure name, and the binder
   * distinguishes them by the method name. A host without memory for it reports that and does not
   * know the component. [binding thread] */
  void (*AddClientPurge)(KAPClientPurgeProc clearAll, int);
  /* Removes a procedure registered with AddClientPurge; ignores any other. [binding thread] */
  void (*RemoveClientPurge)(KAPClientPurgeProc clearAll, int);
  /* A new, empty set of identities: one reference. Null: out of memory. [any thread] */
  KAPCacheSet* (*NewCacheSet)(void);
  /* Adds one reference; null is ignored. [any thread] */
  void (*AddRefCacheSet)(KAPCacheSet* set);
  /* Releases one reference; null is ignored. [any thread] */
  void (*DeleteCacheSet)(KAPCacheSet* set);
  /* Whether the set contains the identity. Deliberate: adds the identity if not, which is the only
   * way to add one. A host without memory for it reports that, returns false and adds nothing.
   * [any thread] */
  bool (*SearchForID)(KAPCacheSet* set, KAPCacheID* id);
  /* Removes the identity; one that is not in the set is ignored. [any thread] */
  void (*RemoveID)(KAPCacheSet* set, KAPCacheID* id);
  /* Removes all identities. [any thread] */
  void (*RemoveIDs)(KAPCacheSet* set);
} KAPCacheInterfaceProcs;

/* The procedures that a component hands over with a sink or filter object of its own, `client`.
 * Each returns null or a new error reference. */
typedef KAPError* (*KAPSinkWriteProc)(void* client, const unsigned char* data, size_t count);
typedef KAPError* (*KAPSinkDeleteProc)(void* client);
typedef KAPError* (*KAPFilterCloseProc)(void* client);
typedef KAPError* (*KAPFilterGetVellumcodeFilterProc)(KAPFilter** out, void* client);
typedef KAPError* (*KAPImageParmsProc)(void* client, int width, int height, int channels);
typedef KAPError* (*KAPCompressionParmsProc)(void* client, float quality);

/* Sinks take bytes. A filter is a sink that transforms its bytes and writes the result to its
 * target; a filter handle is valid wherever a sink handle is. A call on a sink that is not a filter
 * of the required kind is an error. See the conventions above.
 *
 * The `New...` procedures of client objects take over `client` on success: the last release passes
 * it to `deleteClient`. On an error the client stays the caller's. */
#define KAPFilterInterface_NAME "KAPFilterInterface"
#define KAPFilterInterface_METHODS(X) \
  X(NewNullDataSink, "KAPFilterNewNullDataSinkV2Proc") \
  X(NewClientDataSink, "KAPFilterNewClientDataSinkV2Proc") \
  X(NewIdentityFilter, "KAPFilterNewIdentityFilterV2Proc") \
  X(NewClientFilter, "KAPFilterNewClientFilterV2Proc") \
  X(NewFilterJPEG, "KAPFilterNewFilterJPEGV2Proc") \
  X(AddRef, "KAPFilterAddRefV2Proc") \
  X(Release, "KAPFilterReleaseProc") \
  X(Write, "KAPFilterWriteV2Proc") \
  X(IsFilter, "KAPFilterIsFilterProc") \
  X(Close, "KAPFilterCloseProc") \
  X(GetVellumcodeFilter, "KAPFilterGetVellumcodeFilterProc") \
  X(SetDataSink, "KAPFilterSetDataSinkV2Proc") \
  X(PeekTarget, "KAPFilterPeekTargetProc") \
  X(SetImageParameters, "KAPFilterJPEGSetImageParametersProc") \
  X(SetCompressionParameters, "KAPFilterJPEGSetCompressionParametersProc") \
  X(GetChainState, "KAPFilterGetChainStateV2Proc") \
  X(ResetChainState, "KAPFilterResetChainStateProc")
typedef struct KAPFilterInterfaceProcs {
  /* A sink that discards its bytes: one reference. [any thread] */
  KAPError* (*NewNullDataSink)(KAPDataSink** out);
  /* A sink that forwards to `client`: one reference. [any thread] */
  KAPError* (*NewClientDataSink)(KAPDataSink** out, void* client, KAPSinkWriteProc write,
      KAPSinkDeleteProc deleteClient);
  /* A filter that writes its bytes to `target` unchanged: one reference. The filter holds a
   * reference to the target. [any thread] */
  KAPError* (*NewIdentityFilter)(KAPFilter** out, KAPDataSink* target);
  /* A filter that forwards to `client`, which writes to the target itself: one reference. The
   * filter holds a reference to the target. [any thread] */
  KAPError* (*NewClientFilter)(KAPFilter** out, KAPDataSink* target, void* client,
      KAPSinkWriteProc write, KAPSinkDeleteProc deleteClient, KAPFilterCloseProc close,
      KAPFilterGetVellumcodeFilterProc getVellumcodeFilter);
  /* As NewClientFilter, for a JPEG coder, which is the client's: the host only forwards the
   * parameters. One reference. [any thread] */
  KAPError* (*NewFilterJPEG)(KAPFilter** out, KAPDataSink* target, void* client,
      KAPSinkWriteProc write, KAPSinkDeleteProc deleteClient, KAPFilterCloseProc close,
      KAPFilterGetVellumcodeFilterProc getVellumcodeFilter, KAPImageParmsProc imageParms,
      KAPCompressionParmsProc compressionParms);
  /* Adds one reference; null is ignored. [any thread] */
  void (*AddRef)(KAPDataSink* sink);
  /* Releases one reference; null is ignored. [any thread] */
  void (*Release)(KAPDataSink* sink);
  /* Writes all `count` bytes, or returns an error, for a closed filter among others. [exclusive] */
  KAPError* (*Write)(KAPDataSink* sink, const unsigned char* data, size_t count);
  /* Whether the sink is a filter; false for null. [any thread] */
  bool (*IsFilter)(KAPDataSink* sink);
  /* Ends the filter's output and closes the filter; for a closed filter does nothing. After an
   * error the filter is still open. [exclusive] */
  KAPError* (*Close)(KAPFilter* filter);
  /* The filter that reverses this one: one reference, or null and no error when there is none.
   * [exclusive] */
  KAPError* (*GetVellumcodeFilter)(KAPFilter** out, KAPFilter* filter);
  /* Replaces the target; the filter holds a reference to the new one. An error when the filter
   * would lead to itself. [exclusive] */
  KAPError* (*SetDataSink)(KAPFilter* filter, KAPDataSink* target);
  /* The target, borrowed; null for a sink that is not a filter. [shared read] */
  KAPDataSink* (*PeekTarget)(KAPFilter* filter);
  /* Forwards the image's size in pixels and its number of channels to a JPEG coder. [exclusive] */
  KAPError* (*SetImageParameters)(KAPFilter* filter, int width, int height, int channels);
  /* Forwards the quality to a JPEG coder, which defines its range. [exclusive] */
  KAPError* (*SetCompressionParameters)(KAPFilter* filter, float quality);
  /* The number of closed filters in the chain: this one and those that follow it as targets.
   * [shared read] */
  KAPError* (*GetChainState)(unsigned long* out, KAPFilter* filter);
  /* Opens all filters of the chain. [exclusive] */
  KAPError* (*ResetChainState)(KAPFilter* filter);
} KAPFilterInterfaceProcs;

/* Memory of the host, for what crosses the binder and for the objects of components. See the
 * conventions above. */
#define KAPMemoryInterface_NAME "KAPMemoryInterface"
#define KAPMemoryInterface_METHODS(X) \
  X(Alloc, "KAPMemAllocProc") \
  X(Realloc, "KAPMemReallocProc") \
  X(Free, "KAPMemFreeProc") \
  X(GetBlockSize, "KAPMemGetBlockSizeProc")
typedef struct KAPMemoryInterfaceProcs {
  /* A block of at least `size` bytes, 16-byte aligned, not initialised. Null: out of memory. `size`
   * is not 0. [any thread] */
  void* (*Alloc)(size_t size);
  /* Resizes `block`, which may move, and keeps the bytes that fit; with a null block as Alloc.
   * Null: out of memory, and the block is unchanged. [exclusive] */
  void* (*Realloc)(void* block, size_t size);
  /* Frees a block of this interface; null is ignored. [any thread] */
  void (*Free)(void* block);
  /* The usable size in bytes, at least the size that was requested. [any thread] */
  size_t (*GetBlockSize)(void* block);
} KAPMemoryInterfaceProcs;

/* The procedures that a component hands over with a progress object of its own, `client`. Each
 * returns null or a new error reference. */
typedef KAPError* (*KAPProgressUpdateProc)(void* client, float fraction, const char* text,
    int flag);
typedef KAPError* (*KAPProgressDeleteProc)(void* client);

/* Receivers of progress: one side updates its progress, the other side shows it. See the
 * conventions above. */
#define KAPProgressInterface_NAME "KAPProgressInterface"
#define KAPProgressInterface_METHODS(X) \
  X(NewNullProgress, "KAPProgressNewNullProgressProc") \
  X(NewClientProgress, "KAPProgressNewClientProgressProc") \
  X(AddRef, "KAPProgressAddRefProc") \
  X(Release, "KAPProgressReleaseProc") \
  X(Update, "KAPProgressUpdateProc")
typedef struct KAPProgressInterfaceProcs {
  /* A progress object that ignores its updates: one reference. Null: out of memory. [any thread] */
  KAPProgress* (*NewNullProgress)(void);
  /* A progress object that forwards to `client`: one reference. The last release passes the client
   * to `deleteClient`. Null: out of memory or an argument is null; the client stays the caller's.
   * [any thread] */
  KAPProgress* (*NewClientProgress)(void* client, KAPProgressUpdateProc update,
      KAPProgressDeleteProc deleteClient);
  /* Adds one reference; null is ignored. [any thread] */
  void (*AddRef)(KAPProgress* progress);
  /* Releases one reference; null is ignored. [any thread] */
  void (*Release)(KAPProgress* progress);
  /* Sets the progress: `fraction` (0 to 1) of the work is done. `text` may be null; both sides
   * agree on the meaning of `flag`. An error asks the caller to stop. [exclusive] */
  KAPError* (*Update)(KAPProgress* progress, float fraction, const char* text, int flag);
} KAPProgressInterfaceProcs;

/* Resizes the storage of a buffer. Null: out of memory, and the storage is unchanged. */
typedef void* (*KAPGrowProc)(void* data, size_t size, void* clientData);

/* Shared buffers: blocks of bytes with reference counts, for several components. See the
 * conventions above. */
#define KAPSharedBuffInterface_NAME "KAPSharedBuffInterface"
#define KAPSharedBuffInterface_METHODS(X) \
  X(NewBuffer, "KAPSharedBuffNewBufferV3Proc") \
  X(DeleteUnowned, "KAPSharedBuffDelUnownedProc") \
  X(AddRef, "KAPSharedBuffAddRefProc") \
  X(Release, "KAPSharedBuffReleaseProc") \
  X(GetBuffer, "KAPSharedBuffGetBufferProc") \
  X(GetSize, "KAPSharedBuffGetSizeProc")
typedef struct KAPSharedBuffInterfaceProcs {
  /* A buffer of `size` bytes: one reference. `data` null: zeroed storage of the host. Otherwise the
   * buffer takes over `data`, and the last release passes it to `deleteProc`, which may be null; so
   * may `growProc` and its `clientData`. Null: out of memory, and the data stays the caller's.
   * [any thread] */
  KAPSharedBuffer* (*NewBuffer)(size_t size, void* data, KAPDeleteProc deleteProc,
      KAPGrowProc growProc, void* clientData);
  /* Deletes a buffer that has no reference; otherwise does nothing. [any thread] */
  void (*DeleteUnowned)(KAPSharedBuffer* buffer);
  /* Adds one reference; null is ignored. [any thread] */
  void (*AddRef)(KAPSharedBuffer* buffer);
  /* Releases one reference; null is ignored. [any thread] */
  void (*Release)(KAPSharedBuffer* buffer);
  /* The bytes, borrowed: they live as long as the buffer. Null for null. [any thread] */
  unsigned char* (*GetBuffer)(KAPSharedBuffer* buffer);
  /* The size in bytes; 0 for null. [any thread] */
  size_t (*GetSize)(KAPSharedBuffer* buffer);
} KAPSharedBuffInterfaceProcs;

/* Streams: the factory that makes them, and the methods of each kind of stream. Data stores and
 * data-block streams lend text instead of copying it. See the conventions above.
 *
 * A stream is a container. Its methods are looked up through the container, so any component may
 * provide streams. There are three kinds: simple (read, write), rewindable and positionable; each
 * has the methods of the kinds before it as well. Positions and sizes are in bytes. */

/* Where the offset of a seek counts from. */
#ifdef __cplusplus
using KAP_T_MT::KAPSeekOrigin;
using KAP_T_MT::kKAPSeekFromStart;
using KAP_T_MT::kKAPSeekFromPosition;
using KAP_T_MT::kKAPSeekFromEnd;
#else
enum KAPSeekOrigin {
  kKAPSeekFromStart = 0, kKAPSeekFromPosition = 1, kKAPSeekFromEnd = 2
};
#endif

/* The procedures that a component hands over with a stream object of its own, `client`. Each
 * returns null or a new error reference; after an error a result place is 0 or null.
 *
 *   Read       0 bytes mean the end of the input.
 *   Write      Writes all bytes, or fails.
 *   Delete     The host reports an error that it returns: a release has no result.
 *   Create...  Returns a new client object. The host makes a stream for it with the same
 *              procedures, and passes it to Delete when it cannot.
 *   Seek       `origin` is a KAPSeekOrigin. */
typedef KAPError* (*KAPClientReadProc)(size_t* outCount, void* client, unsigned char* buffer,
    size_t count);
typedef KAPError* (*KAPClientWriteProc)(void* client, const unsigned char* buffer, size_t count);
typedef KAPError* (*KAPClientDeleteProc)(void* client);
typedef KAPError* (*KAPClientCreateStreamProc)(void** outClient, void* client);
typedef KAPError* (*KAPClientRewindProc)(void* client);
typedef KAPError* (*KAPClientMarkProc)(long* outPosition, void* client);
typedef KAPError* (*KAPClientSeekProc)(void* client, long offset, int origin);

/* Makes streams: each procedure returns one reference. The procedures for client streams take over
 * `client` on success: the last release passes it to `deleteClient`. On an error the client stays
 * the caller's. */
#define KAPStreamFactoryInterface_NAME "KAPStreamFactoryInterface"
#define KAPStreamFactoryInterface_METHODS(X) \
  X(NewPositionableMemoryStream, "KAPNewPositionableMemoryStreamProc") \
  X(NewPositionableBufferStream, "KAPNewPositionableBufferStreamProc") \
  X(NewPositionableFileStream, "KAPNewPositionableFileStreamProc") \
  X(NewClientSimpleStream, "KAPNewClientSimpleStreamProc") \
  X(NewClientRewindableStream, "KAPNewClientRewindableStreamProc") \
  X(NewClientPositionableStream, "KAPNewClientPositionableStreamProc")
typedef struct KAPStreamFactoryInterfaceProcs {
  /* An empty stream in memory, for reading and writing. [any thread] */
  KAPError* (*NewPositionableMemoryStream)(KAPPositionableStream** out);
  /* A read-only stream over a copy of the bytes. [any thread] */
  KAPError* (*NewPositionableBufferStream)(KAPPositionableStream** out, const unsigned char* data,
      size_t size);
  /* A stream over the file at `path`, opened with a mode of fopen. The last release closes the
   * file. [any thread] */
  KAPError* (*NewPositionableFileStream)(KAPPositionableStream** out, const char* path,
      const char* mode);
  /* A simple stream that forwards to `client`. [any thread] */
  KAPError* (*NewClientSimpleStream)(KAPSimpleStream** out, void* client, KAPClientReadProc read,
      KAPClientWriteProc write, KAPClientDeleteProc deleteClient);
  /* A rewindable stream that forwards to `client`. [any thread] */
  KAPError* (*NewClientRewindableStream)(KAPRewindableStream** out, void* client,
      KAPClientReadProc read, KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
      KAPClientCreateStreamProc createIndependentlyRewindableStream, KAPClientRewindProc rewind);
  /* A positionable stream that forwards to `client`. [any thread] */
  KAPError* (*NewClientPositionableStream)(KAPPositionableStream** out, void* client,
      KAPClientReadProc read, KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
      KAPClientCreateStreamProc createIndependentlyRewindableStream, KAPClientRewindProc rewind,
      KAPClientCreateStreamProc createIndependentlyPositionableStream, KAPClientMarkProc mark,
      KAPClientSeekProc seek);
} KAPStreamFactoryInterfaceProcs;

/* The methods of every stream. */
#define KAPSimpleStreamInterface_NAME "KAPSimpleStreamInterface"
#define KAPSimpleStreamInterface_METHODS(X) \
  X(Read, "KAPSimpleStreamReadProc") \
  X(Write, "KAPSimpleStreamWriteProc")
typedef struct KAPSimpleStreamInterfaceProcs {
  /* Reads up to `count` bytes at the position and moves the position past them. `*outCount`: how
   * many; 0 at the end of the input. [exclusive] */
  KAPError* (*Read)(size_t* outCount, KAPSimpleStream* stream, unsigned char* buffer, size_t count);
  /* Writes all `count` bytes at the position and moves the position past them, or returns an error.
   * [exclusive] */
  KAPError* (*Write)(KAPSimpleStream* stream, const unsigned char* buffer, size_t count);
} KAPSimpleStreamInterfaceProcs;

/* The methods of a stream that also moves to its start. */
#define KAPRewindableStreamInterface_NAME "KAPRewindableStreamInterface"
#define KAPRewindableStreamInterface_METHODS(X) \
  X(CreateIndependentlyRewindableStream, \
    "KAPRewindableStreamCreateIndependentlyRewindableStreamProc") \
  X(Rewind, "KAPRewindableStreamRewindProc")
typedef struct KAPRewindableStreamInterfaceProcs {
  /* A stream over the same data with a position of its own: one reference. [exclusive] */
  KAPError* (*CreateIndependentlyRewindableStream)(KAPRewindableStream** out,
      KAPRewindableStream* stream);
  /* Moves the position to the start. [exclusive] */
  KAPError* (*Rewind)(KAPRewindableStream* stream);
} KAPRewindableStreamInterfaceProcs;

/* The methods of a stream that also moves anywhere. */
#define KAPPositionableStreamInterface_NAME "KAPPositionableStreamInterface"
#define KAPPositionableStreamInterface_METHODS(X) \
  X(CreateIndependentlyPositionableStream, \
    "KAPPositionableStreamCreateIndependentlyPositionableStreamProc") \
  X(Mark, "KAPPositionableStreamMarkProc") \
  X(Seek, "KAPPositionableStreamSeekProc")
typedef struct KAPPositionableStreamInterfaceProcs {
  /* A stream over the same data with a position of its own: one reference. [exclusive] */
  KAPError* (*CreateIndependentlyPositionableStream)(KAPPositionableStream** out,
      KAPPositionableStream* stream);
  /* The position, in bytes from the start. [exclusive] */
  KAPError* (*Mark)(long* outPosition, KAPPositionableStream* stream);
  /* Moves the position; `origin` is a KAPSeekOrigin. [exclusive] */
  KAPError* (*Seek)(KAPPositionableStream* stream, long offset, int origin);
} KAPPositionableStreamInterfaceProcs;

/* The methods of a data store. */
#define KAPDataStoreInterface_NAME "KAPDataStoreInterface"
#define KAPDataStoreInterface_METHODS(X) \
  X(GetBlock, "KAPDataStoreGetBlockProcV2")
typedef struct KAPDataStoreInterfaceProcs {
  /* The text from `offset` (in bytes) on, as far as the store keeps it in one piece. The caller
   * calls the block's `release` once. [exclusive] */
  KAPError* (*GetBlock)(KAPDataBlock* out, KAPDataStore* store, size_t offset);
} KAPDataStoreInterfaceProcs;

/* The methods of a data store that knows its size. */
#define KAPSizedDataStoreInterface_NAME "KAPSizedDataStoreInterface"
#define KAPSizedDataStoreInterface_METHODS(X) \
  X(GetSize, "KAPSizedDataStoreGetSizeProc")
typedef struct KAPSizedDataStoreInterfaceProcs {
  /* The size of the text in bytes. [exclusive] */
  KAPError* (*GetSize)(size_t* out, KAPDataStore* store);
} KAPSizedDataStoreInterfaceProcs;

/* The methods of a sequence of blocks. */
#define KAPDataBlockStreamInterface_NAME "KAPDataBlockStreamInterface"
#define KAPDataBlockStreamInterface_METHODS(X) \
  X(GetNextBlock, "KAPDataBlockStreamGetNextBlockProc") \
  X(Rewind, "KAPDataBlockStreamRewindProc")
typedef struct KAPDataBlockStreamInterfaceProcs {
  /* The next block; one without text at the end. The caller calls the block's `release` once.
   * [exclusive] */
  KAPError* (*GetNextBlock)(KAPDataBlock* out, KAPDataBlockStream* stream);
  /* Makes the first block the next one. [exclusive] */
  KAPError* (*Rewind)(KAPDataBlockStream* stream);
} KAPDataBlockStreamInterfaceProcs;

/* The interfaces of directories and temporary files, as the library registers them with the binder.
 *
 * The conventions of every procedure are those of a host, above. In short: the result is null or a
 * new reference to an error; a result place is then null or 0. A null result place is an error, and
 * nothing is done. Handles, atoms and strings passed in are borrowed for the call; a returned
 * handle or atom carries one new reference for the caller. Null is an error unless a contract
 * allows it.
 *
 * Errors: a failing system call is an error of the component "KAPUtilsDir" with the errno as its
 *   code and the message that the procedure names. Everything else (a null argument, a handle of
 *   another kind, a host that fails) is the error that any procedure returns in that case. */

/* A directory is a path, kept unchanged: it is not opened and need not exist until it is used. It
 * cannot change, so any thread may use it. The full path of a file is the directory, a slash unless
 * the directory ends in one, and the name unchanged: deliberately, an absolute name is appended as
 * well, and ".." leads out of the directory. A relative path is resolved against the working
 * directory of the process at each use. */
#define KAPUtilsDirInterface_NAME "KAPUtilsDirInterface"
#define KAPUtilsDirInterface_METHODS(X) \
  X(GetTempDir, "KAPUtilsDirGetTempDir") \
  X(GetCurrent, "KAPUtilsDirGetCurrent") \
  X(NewKAPUtilsDir, "KAPUtilsDirNewKAPUtilsDir") \
  X(FileExists, "KAPUtilsDirFileExists") \
  X(Delete, "KAPUtilsDirDelete") \
  X(Rename, "KAPUtilsDirRename") \
  X(GetFilePathSpec, "KAPUtilsDirGetFilePathSpec") \
  X(CreateUniqueFilename, "KAPUtilsDirCreateUniqueFilename")
typedef struct KAPUtilsDirInterfaceProcs {
  /* The directory for temporary files: the value of the environment variable TMPDIR, even an empty
   * one; "/tmp" when it is not set. [any thread] */
  KAPError* (*GetTempDir)(KAPUtilsDir** out);
  /* The working directory of the process. "KAPUtilsDirImpl::GetCurrent: Unknown error" when the
   * system call fails or the path is longer than 1023 bytes. [any thread] */
  KAPError* (*GetCurrent)(KAPUtilsDir** out);
  /* The directory at `path`, which is not opened. [any thread] */
  KAPError* (*NewKAPUtilsDir)(KAPUtilsDir** out, KAPStringAtom* path);
  /* 1 for an entry of any kind, 0 for none. Follows symbolic links; a path that cannot be examined
   * counts as absent. [any thread] */
  KAPError* (*FileExists)(unsigned char* out, KAPUtilsDir* directory, KAPStringAtom* name);
  /* Deletes a file, an empty directory or a symbolic link itself. Makes no host call that can fail,
   * so a caller can always clean up. "KAPUtilsDirImpl::Delete: Unknown error". [any thread] */
  KAPError* (*Delete)(KAPUtilsDir* directory, KAPStringAtom* name);
  /* Renames `from` to `to`, both in the directory, replacing an existing `to`.
   * "KAPUtilsDirImpl::Rename: Unknown error". [any thread] */
  KAPError* (*Rename)(KAPUtilsDir* directory, KAPStringAtom* from, KAPStringAtom* to);
  /* The full path; the file need not exist. [any thread] */
  KAPError* (*GetFilePathSpec)(KAPStringAtom** out, KAPUtilsDir* directory, KAPStringAtom* name);
  /* Creates an empty file that only its owner may read and write, and returns its name: the prefix,
   * a period and six characters that make the name unique, also among processes. The part of the
   * prefix up to its last slash is not part of the name. The file stays until it is deleted; after
   * an error there is none. `second` is ignored and may be null. "KAPUtilsDirImpl::createNewFile:
   * Unknown error".
   *
   * Deliberate: each call keeps a descriptor of the file open (close-on-exec) until the process
   * ends. A process has a limited number of descriptors, and the storage of a deleted file is freed
   * only when the process ends. [any thread] */
  KAPError* (*CreateUniqueFilename)(KAPStringAtom** out, KAPUtilsDir* directory,
      KAPStringAtom* prefix, KAPStringAtom* second);
} KAPUtilsDirInterfaceProcs;

/* Streams over temporary files. */
#define KAPUtilsTempFileStreamFactory_NAME "KAPUtilsTempFileStreamFactory"
#define KAPUtilsTempFileStreamFactory_METHODS(X) \
  X(NewTempFileStream, "_KAPUtilsNewTempFileStreamProc_NewTempFileStream")
typedef struct KAPUtilsTempFileStreamFactoryProcs {
  /* A stream over a new file in the directory for temporary files, named as by
   * "CreateUniqueFilename", whose note on descriptors applies. `prefix` contains no slash; `second`
   * is ignored and may be null; `mode` is one of fopen's: "w+b" writes and reads. When the call
   * fails, no file remains. When "KAPUtilsDirInterface" is gone, the error is the one with the
   * empty message.
   *
   * The last release of the stream closes and deletes the file; the host reports a deletion that
   * fails. If a stream outlives the library's termination, its file remains.
   *
   * "CreateIndependentlyPositionableStream" makes read-only views of the file, each with a position
   * of its own. The first call also turns the stream itself into a view, at position 0: everything
   * written is then in the file, and nothing more can be written, even if the call goes on to fail.
   * A view can still be read after the file is deleted, but makes no further views. Each is opened
   * through the descriptor of the file, so that it reads this file even if its name leads to
   * another one by now. Where the descriptor was closed, the name is used, and if it leads to
   * another file, the error is "the temporary file was replaced". Several threads may make views at
   * the same time. [any thread] */
  KAPError* (*NewTempFileStream)(KAPPositionableStream** out, const char* prefix,
      const char* second, const char* mode);
} KAPUtilsTempFileStreamFactoryProcs;

/* The interfaces of property objects, as they are registered with the binder. A component fetches
 * the procedures and calls them:
 *
 *   POSArray* numbers = NewPOSArray();                    // one reference, the caller's
 *   POSObject* one = NewPOSNumber(1);
 *   Append(numbers, one);                                 // the array takes a reference of its own
 *   Release(one);                                         // "Release" of KAPContainerInterface
 *   POSObject* same = GetAt(numbers, 0);                  // a new reference
 *   if (same && IsPOSNumber(same)) Use(Get(same));
 *
 * Conventions of every procedure:
 *
 * 1. A failure is reported to the binder and the result is null, false or 0 (for IsDone: true).
 *    Nothing else changes: a call that fails leaves every object as it was. Where a contract says
 *    that a case is quiet, it is not a failure, and nothing is reported.
 * 2. A failing call reports at least once. "Clone" and "IsEqual" go through the library's own
 *    objects directly, so that the number of reports does not grow with the depth: the first one is
 *    the cause, and for the element of an object that is cloned a second one says so. An object of
 *    another component is asked through its own procedures, which report as well.
 * 3. Handles, atoms and texts passed in are borrowed for the call. A handle returned carries one
 *    new reference for the caller; "Clone" of a scalar is the one exception.
 * 4. A null handle, atom or text, and a handle of another kind, is a failure wherever the contract
 *    does not allow it.
 * 5. Each contract ends with a thread tag. Objects have no lock. Reference
 *    counts may change on any thread at any time. */

/* Releases what a raw pointer points to, when the last reference to its object is released. Runs on
 * the thread of that release. It must not throw; what it throws is reported to the binder. It may
 * call the library, release objects included: what it releases is destroyed before "Release"
 * returns, unless another reference exists. The stack is the limit: once release procedures are
 * nested so deep in each other that it is nearly used up, what they release is destroyed later,
 * before the outermost "Release" on the thread returns. [any thread] */
typedef void (*POSReleaseProc)(void* pointer);

/* What objects of every kind have. The library's own objects offer these as methods of their
 * container too, and so does any other component's implementation of property objects; a caller
 * asks the container, and so reaches both. */
#define POSObjectInterface_NAME "POSObjectInterface"
#define POSObjectInterface_METHODS(X) \
  X(Clone, "POSObjectCloneProc") \
  X(IsEqual, "POSObjectIsEqualProc") \
  X(GetType, "POSObjectGetTypeProc")
typedef struct POSObjectInterfaceProcs {
  /* A copy that can change without the original. A scalar never changes and is its own clone: the
   * result is the handle passed in, without a new reference, deliberately. An array or dictionary
   * is cloned all the way down; empty slots stay empty. Null when it is nested too deep for the
   * stack of this thread. [shared read] */
  POSObject* (*Clone)(POSObject* object);
  /* Whether both have the same kind and the same content. A dictionary equals one that holds more
   * than it does, deliberately: the entries of `object` decide. Quiet, and false, when `other` is
   * null or not a property object. [shared read] */
  bool (*IsEqual)(POSObject* object, POSObject* other);
  /* The kind, a POSType; 0 on failure. [any thread] */
  int (*GetType)(POSObject* object);
} POSObjectInterfaceProcs;

/* Procedures that are not methods of an object. */
#define POSObjectStatics_NAME "POSObjectStatics"
#define POSObjectStatics_METHODS(X) \
  X(DebugDump, "POSObjectDebugDumpProc") \
  X(DebugDumpWithHeader, "POSObjectDebugDumpWithHeaderProc") \
  X(DebugDumpRewind, "POSObjectDebugDumpRewindProc") \
  X(CreateFromText, "POSObjectCreateFromTextProc")
typedef struct POSObjectStaticsProcs {
  /* Deliberate no-op: checks the handle and writes nothing. [any thread] */
  void (*DebugDump)(POSObject* object);
  /* The same; `header` may be null. [any thread] */
  void (*DebugDumpWithHeader)(POSObject* object, const char* header);
  /* The same; `header` may be null. [any thread] */
  void (*DebugDumpRewind)(POSObject* object, const char* header);
  /* The object that `text` describes, for example "< name (Anna) tags [a b] >", and null in `*end`.
   * A syntax error is quiet: the result is null, and `*end` points to where the reader stopped.
   * After any other failure, such as text nested too deep, `*end` points to the position reached.
   * `end` may be null. All or nothing. [any thread] */
  POSObject* (*CreateFromText)(const char* text, const char** end);
} POSObjectStaticsProcs;

/* Numbers: doubles. */
#define POSNumberInterface_NAME "POSNumberInterface"
#define POSNumberInterface_METHODS(X) \
  X(NewPOSNumber, "POSNumberNewPOSNumberProc") \
  X(IsPOSNumber, "POSNumberIsPOSNumberProc") \
  X(Get, "POSNumberGetProc")
typedef struct POSNumberInterfaceProcs {
  /* A number of this value, which may be infinite or not a number. [any thread] */
  POSNumber* (*NewPOSNumber)(double value);
  /* Whether the handle is a number of this library. Quiet for any other handle, and for null.
   * [any thread] */
  bool (*IsPOSNumber)(POSObject* object);
  /* The value. [any thread] */
  double (*Get)(POSNumber* number);
} POSNumberInterfaceProcs;

/* Strings of bytes in no particular encoding. Equal strings share one text. */
#define POSStringInterface_NAME "POSStringInterface"
#define POSStringInterface_METHODS(X) \
  X(NewPOSString, "POSStringNewPOSStringProc") \
  X(IsPOSString, "POSStringIsPOSStringProc") \
  X(Get, "POSStringGetProc")
typedef struct POSStringInterfaceProcs {
  /* A string of the bytes up to the terminator; the text is copied. [any thread] */
  POSString* (*NewPOSString)(const char* text);
  /* Whether the handle is a string of this library. Quiet for any other handle, and for null.
   * [any thread] */
  bool (*IsPOSString)(POSObject* object);
  /* The terminated text, borrowed: it lives as long as the object. [any thread] */
  const char* (*Get)(POSString* string);
} POSStringInterfaceProcs;

/* Strings of 16-bit units, meant for UTF-16. The units are not checked. */
#define POSUnicodeStringInterface_NAME "POSUnicodeStringInterface"
#define POSUnicodeStringInterface_METHODS(X) \
  X(NewPOSUnicodeString, "POSUnicodeStringNewPOSUnicodeStringProc") \
  X(IsPOSUnicodeString, "POSUnicodeStringIsPOSUnicodeStringProc") \
  X(Get, "POSUnicodeStringGetProc")
typedef struct POSUnicodeStringInterfaceProcs {
  /* A string of the units up to a zero unit; they are copied. [any thread] */
  POSUnicodeString* (*NewPOSUnicodeString)(const unsigned short* text);
  /* Whether the handle is a Unicode string of this library. Quiet for any other handle, and for
   * null. [any thread] */
  bool (*IsPOSUnicodeString)(POSObject* object);
  /* The units and a terminating zero unit, borrowed: they live as long as the object.
   * [any thread] */
  const unsigned short* (*Get)(POSUnicodeString* string);
} POSUnicodeStringInterfaceProcs;

/* Bytes with the name of their type, which means something to their users only. */
#define POSBinDataInterface_NAME "POSBinDataInterface"
#define POSBinDataInterface_METHODS(X) \
  X(NewPOSBinData, "POSBinDataNewPOSBinDataProc") \
  X(IsPOSBinData, "POSBinDataIsPOSBinDataProc") \
  X(GetTypeName, "POSBinDataGetTypeNameProc") \
  X(GetBinData, "POSBinDataGetBinDataProc") \
  X(GetSize, "POSBinDataGetSizeProc")
typedef struct POSBinDataInterfaceProcs {
  /* Binary data that copies `size` bytes; `data` may be null when `size` is 0. [any thread] */
  POSBinData* (*NewPOSBinData)(const char* typeName, const unsigned char* data, unsigned long size);
  /* Whether the handle is binary data of this library. Quiet for any other handle, and for null.
   * [any thread] */
  bool (*IsPOSBinData)(POSObject* object);
  /* The terminated name, borrowed: it lives as long as the object. [any thread] */
  const char* (*GetTypeName)(POSBinData* data);
  /* The bytes, borrowed: they live as long as the object. Null, quietly, when there are none.
   * [any thread] */
  const unsigned char* (*GetBinData)(POSBinData* data);
  /* How many bytes there are. [any thread] */
  unsigned long (*GetSize)(POSBinData* data);
} POSBinDataInterfaceProcs;

/* Pointers that the library does not follow, such as a host's own objects. */
#define POSRawPointerInterface_NAME "POSRawPointerInterface"
#define POSRawPointerInterface_METHODS(X) \
  X(NewPOSRawPointer, "POSRawPointerNewPOSRawPointerProc") \
  X(IsPOSRawPointer, "POSRawPointerIsPOSRawPointerProc") \
  X(GetRawPointer, "POSRawPointerGetRawPointerProc") \
  X(GetReleaseProc, "POSRawPointerGetReleaseProcProc")
typedef struct POSRawPointerInterfaceProcs {
  /* A raw pointer that owns what it points to: `release` is called with the pointer once, when the
   * object is destroyed. Both may be null. On failure the pointer stays the caller's, and `release`
   * is not called. [any thread] */
  POSRawPointer* (*NewPOSRawPointer)(void* pointer, POSReleaseProc release);
  /* Whether the handle is a raw pointer of this library. Quiet for any other handle, and for null.
   * [any thread] */
  bool (*IsPOSRawPointer)(POSObject* object);
  /* The pointer, which may be null. It stays the object's. [any thread] */
  void* (*GetRawPointer)(POSRawPointer* pointer);
  /* The release procedure, which may be null. The doubled "Proc" of the name is deliberate: it
   * follows from the method's name. [any thread] */
  POSReleaseProc (*GetReleaseProc)(POSRawPointer* pointer);
} POSRawPointerInterfaceProcs;

/* Sequences of slots, each a property object of any component or empty. Slots count from 0. */
#define POSArrayInterface_NAME "POSArrayInterface"
#define POSArrayInterface_METHODS(X) \
  X(NewPOSArray, "POSArrayNewPOSArrayProc") \
  X(IsPOSArray, "POSArrayIsPOSArrayProc") \
  X(GetAt, "POSArrayGetAtProc") \
  X(Count, "POSArrayCountProc") \
  X(SetAt, "POSArraySetAtProc") \
  X(Append, "POSArrayAppendProc") \
  X(Remove, "POSArrayRemoveProc")
typedef struct POSArrayInterfaceProcs {
  /* An array without slots. [any thread] */
  POSArray* (*NewPOSArray)(void);
  /* Whether the handle is an array of this library. Quiet for any other handle, and for null.
   * [any thread] */
  bool (*IsPOSArray)(POSObject* object);
  /* The object in the slot, a new reference. Null, quietly, past the end and for an empty slot.
   * [shared read] */
  POSObject* (*GetAt)(POSArray* array, unsigned long index);
  /* How many slots there are, empty ones included. [shared read] */
  unsigned int (*Count)(POSArray* array);
  /* Puts the object into the slot, with a reference of the array's own, then releases what was
   * there. Past the end the array grows, and slots skipped over stay empty. An index of 2^32 - 1 or
   * more is the failure "Math overflow exception". [exclusive] */
  void (*SetAt)(POSArray* array, unsigned long index, POSObject* object);
  /* Adds a slot at the end, with a reference to the object. [exclusive] */
  void (*Append)(POSArray* array, POSObject* object);
  /* Takes the slot out, then releases what was in it; later slots move down by one. Past the end it
   * is a quiet no-op. [exclusive] */
  void (*Remove)(POSArray* array, unsigned long index);
} POSArrayInterfaceProcs;

/* Maps from texts to property objects of any component. No value is empty. */
#define POSDictInterface_NAME "POSDictInterface"
#define POSDictInterface_METHODS(X) \
  X(NewPOSDict, "POSDictNewPOSDictProc") \
  X(IsPOSDict, "POSDictIsPOSDictProc") \
  X(Get, "POSDictGetProc") \
  X(DeepGet, "POSDictDeepGetProc") \
  X(Put, "POSDictPutProc") \
  X(Remove, "POSDictRemoveProc")
typedef struct POSDictInterfaceProcs {
  /* A dictionary without entries. [any thread] */
  POSDict* (*NewPOSDict)(void);
  /* Whether the handle is a dictionary of this library. Quiet for any other handle, and for null.
   * [any thread] */
  bool (*IsPOSDict)(POSObject* object);
  /* The value of the key, a new reference. Null, quietly, when there is none. [shared read] */
  POSObject* (*Get)(POSDict* dict, KAPStringAtom* key);
  /* The value that a path such as "a.b[2].c" leads to, a new reference. Null, quietly, when the
   * path leads nowhere, whatever the reason; a host that fails on the way is one. An index is taken
   * modulo 2^32, deliberately. [shared read] */
  POSObject* (*DeepGet)(POSDict* dict, KAPStringAtom* path);
  /* Sets the value of the key, with a reference of the dictionary's own, then releases the value
   * that the key had. [exclusive] */
  void (*Put)(POSDict* dict, KAPStringAtom* key, POSObject* object);
  /* Takes the key out, then releases its value. A quiet no-op for a key that is absent.
   * [exclusive] */
  void (*Remove)(POSDict* dict, KAPStringAtom* key);
} POSDictInterfaceProcs;

/* Walks a dictionary in the byte order of its keys:
 *
 *   POSDictIterator* i = NewPOSDictIterator(dict);
 *   for (; !IsDone(i); Next(i)) Use(CurKey(i));
 *   Release(i);
 *
 * An iterator holds no reference: the dictionary must outlive it. Entries may come and go during a
 * walk, but the current entry of the iterator must not be removed. */
#define POSDictIteratorInterface_NAME "POSDictIteratorInterface"
#define POSDictIteratorInterface_METHODS(X) \
  X(NewPOSDictIterator, "POSDictIteratorNewPOSDictIteratorProc") \
  X(Begin, "POSDictIteratorBeginProc") \
  X(Next, "POSDictIteratorNextProc") \
  X(IsDone, "POSDictIteratorIsDoneProc") \
  X(CurKey, "POSDictIteratorCurKeyProc")
typedef struct POSDictIteratorInterfaceProcs {
  /* An iterator at the first entry. [shared read] */
  POSDictIterator* (*NewPOSDictIterator)(POSDict* dict);
  /* Goes to the first entry. Several threads may walk one dictionary, each with an iterator of its
   * own. [exclusive] */
  void (*Begin)(POSDictIterator* iterator);
  /* Goes to the next entry; past the last one the iterator is done and stays so. [exclusive] */
  void (*Next)(POSDictIterator* iterator);
  /* Whether the iterator is past the last entry. True also on failure, so that a loop ends.
   * [shared read] */
  bool (*IsDone)(POSDictIterator* iterator);
  /* The key of the entry, borrowed: it lives as long as the entry. A call on a finished iterator is
   * a failure. [shared read] */
  const char* (*CurKey)(POSDictIterator* iterator);
} POSDictIteratorInterfaceProcs;

/* Documents: property objects on streams. See the conventions of property objects. A streamer has
 * no state: any number of threads may use one, each with a stream of its own.
 *
 * A document is the name of its version, a space, and the object. Several documents may stand in
 * one stream, one after the other: each call continues where the last one ended. */
#define POSStreamerInterface_NAME "POSStreamerInterface"
#define POSStreamerInterface_METHODS(X) \
  X(NewPOSStreamer, "POSStreamerNewPOSStreamerProc") \
  X(Serialize, "POSStreamerSerializeProc") \
  X(Deserialize, "POSStreamerDeserializeProc")
typedef struct POSStreamerInterfaceProcs {
  /* A streamer. [any thread] */
  POSStreamer* (*NewPOSStreamer)(void);
  /* Writes a document at the stream's position. `version` null means "POSStreamerTypeA_Version1.0",
   * at present the only one. What was written before a failure stays in the stream. An empty slot,
   * an object of another component and nesting too deep for the stack of this thread are failures;
   * raw pointers are written for debugging and cannot be read back.
   *
   * No other thread may change the object meanwhile. The stream's own "Write" may: a value that is
   * being written stays alive and is written whole, later values are written as they are at that
   * time. [shared read] */
  void (*Serialize)(POSStreamer* streamer, KAPPositionableStream* stream, POSObject* object,
      const char* version);
  /* The object of the document at the stream's position, a new reference. All or nothing. The
   * stream is left just after what was read of it. A document must end within the first 2 GiB of
   * its stream. [any thread] */
  POSObject* (*Deserialize)(POSStreamer* streamer, KAPPositionableStream* stream);
} POSStreamerInterfaceProcs;

/* The interfaces of validators, as they are registered with the binder. A validator checks property
 * objects against the named types of a schema, a dictionary such as
 *
 *   < Age    < category int min 0 maxexcl 150 >
 *     Person < category dict required < name string > optional < age Age > > >
 *
 * Conventions of every procedure but "ValidateSchema": a failure is reported to the binder, and the
 * result is null or false. Handles and atoms passed in are borrowed for the call; a handle returned
 * carries one new reference for the caller. The introduction explains the thread tags.
 *
 * A check runs the callbacks that are registered for types, on its own thread. Such a callback may
 * change the object or the schema: objects in use stay alive, and the current step finishes with
 * the contents it started with; later steps see the changes. Other threads change neither during a
 * check. */

/* Receives one message, a terminated text borrowed for the call. It must not throw. */
typedef void (*POSMessageProc)(const char* message);

/* An extra validation of objects that comply with their type. Returns nonzero when the object
 * passes, else 0, with the reason as a terminated text in the buffer. The buffer has 1024 bytes,
 * zeroed; a reason without terminator is cut. Handles are borrowed for the call. It must not
 * throw. */
typedef long (*POSExtraValidationProc)(POSObject* object, KAPStringAtom* typeName,
    KAPSharedBuffer* buffer, void* clientData);

/* What every validator has. The library's own validators offer this as a method of their container
 * too, and so may those of any other component; a caller asks the container. */
#define POSValidatorInterface_NAME "POSValidatorInterface"
#define POSValidatorInterface_METHODS(X) \
  X(Validate, "POSValidatorValidateProc")
typedef struct POSValidatorInterfaceProcs {
  /* Whether the object complies with the type. If not, `message`, unless null, is called for each
   * reason, after all checks. An error in the schema, found where it is first needed, is a failure:
   * it is reported, and there are no messages. So is nesting too deep for the stack of this thread.
   * [shared read] */
  bool (*Validate)(POSValidator* validator, POSObject* object, KAPStringAtom* typeName,
      POSMessageProc message);
} POSValidatorInterfaceProcs;

/* Validators over a schema. */
#define POSStructValidatorInterface_NAME "POSStructValidatorInterface"
#define POSStructValidatorInterface_METHODS(X) \
  X(NewPOSStructValidator, "POSStructValidatorNewStructValidatorProc") \
  X(RegisterCallbackProc, "POSStructValidatorRegisterCallbackProc") \
  X(ValidateSchema, "POSStructValidatorValidateSchemaProc")
typedef struct POSStructValidatorInterfaceProcs {
  /* A validator that keeps a reference to the schema. The schema itself is not checked,
   * deliberately: that is what "ValidateSchema" is for. [any thread] */
  POSValidator* (*NewPOSStructValidator)(POSDict* schema);
  /* Registers `callback`, which is then called for each object that complies with the type.
   * Replaces the type's previous callback; null removes it. A callback may itself register
   * callbacks. Never called for intrinsic types. `clientData` is passed to the callback.
   * [exclusive] */
  void (*RegisterCallbackProc)(POSValidator* validator, KAPStringAtom* typeName,
      POSExtraValidationProc callback, void* clientData);
  /* Whether the dictionary is a schema, by the rules of the built-in schema of schemas; `message`
   * as for "Validate". Deliberately the one procedure that lets exceptions through: nothing is
   * reported, and what its check throws ends the process unless a caller in C++ catches it.
   * [shared read] */
  bool (*ValidateSchema)(POSDict* schema, POSMessageProc message);
} POSStructValidatorInterfaceProcs;

/* Every interface. */
#define KAPUTILS_INTERFACES(X) \
  X(KAPBinderInterface) \
  X(KAPStringInterface) \
  X(KAPErrorInterface) \
  X(KAPContainerInterface) \
  X(KAPCacheInterface) \
  X(KAPFilterInterface) \
  X(KAPMemoryInterface) \
  X(KAPProgressInterface) \
  X(KAPSharedBuffInterface) \
  X(KAPStreamFactoryInterface) \
  X(KAPSimpleStreamInterface) \
  X(KAPRewindableStreamInterface) \
  X(KAPPositionableStreamInterface) \
  X(KAPDataStoreInterface) \
  X(KAPSizedDataStoreInterface) \
  X(KAPDataBlockStreamInterface) \
  X(KAPUtilsDirInterface) \
  X(KAPUtilsTempFileStreamFactory) \
  X(POSObjectInterface) \
  X(POSObjectStatics) \
  X(POSNumberInterface) \
  X(POSStringInterface) \
  X(POSUnicodeStringInterface) \
  X(POSBinDataInterface) \
  X(POSRawPointerInterface) \
  X(POSArrayInterface) \
  X(POSDictInterface) \
  X(POSDictIteratorInterface) \
  X(POSStreamerInterface) \
  X(POSValidatorInterface) \
  X(POSStructValidatorInterface)

static_assert(sizeof(bool) == 1 && sizeof(int) == 4 && sizeof(long) == 8 && sizeof(size_t) == 8,
              "the types of the interfaces are those of Linux on x86-64");
static_assert(sizeof(void (*)(void)) == sizeof(void*), "a procedure fits a pointer");
static_assert(sizeof(KAPDataBlock) == 32 && offsetof(KAPDataBlock, text) == 0 &&
                  offsetof(KAPDataBlock, size) == 8 && offsetof(KAPDataBlock, clientData) == 16 &&
                  offsetof(KAPDataBlock, release) == 24,
              "a data block has the layout that other components know");

/* C++ warns about the casts of C. */
#ifdef __cplusplus
#define KAP_CAST(Type, value) static_cast<Type>(value)
#else
#define KAP_CAST(Type, value) ((Type)(value))
#endif

/* A source need not use every function; it must look at the result of those that it uses. */
#define KAP_CHECKED __attribute__((unused, warn_unused_result))

/* The names of one procedure of an interface. */
typedef struct KAPProcName {
  const char* method;    /* in the interface, as a client calls it */
  const char* procedure; /* in the binder, where it distinguishes revisions */
} KAPProcName;

/* Looks up `count` procedures and stores each in `procs`, a structure of nothing but pointers to
 * procedures. Returns 1 when all exist; else 0, with null in each missing place. */
KAP_CHECKED static inline int KAPLoadProcs(void* procs, const char* interfaceName,
                                           const KAPProcName* names, size_t count,
                                           KAPGetProcAddressProc getProc) {
  unsigned char* place = KAP_CAST(unsigned char*, procs);
  int complete = 1;
  for (size_t i = 0; i < count; ++i, place += sizeof(void*)) {
    void* const proc = getProc(interfaceName, names[i].method, names[i].procedure);
    memcpy(place, &proc, sizeof proc); /* strict C does not convert it to a procedure */
    if (!proc) complete = 0;
  }
  return complete;
}

/* Looks up `count` methods of a container and stores them as KAPLoadProcs does. Returns 1 when the
 * container has all of them, else 0; an error of the host counts as a missing method. */
KAP_CHECKED static inline int KAPLoadMethods(void* procs, const KAPProcName* names, size_t count,
                                             const KAPContainerInterfaceProcs* containers,
                                             const KAPStringInterfaceProcs* strings,
                                             const KAPErrorInterfaceProcs* errors,
                                             KAPContainer* container) {
  unsigned char* place = KAP_CAST(unsigned char*, procs);
  int complete = 1;
  for (size_t i = 0; i < count; ++i, place += sizeof(void*)) {
    KAPStringAtom* const method = strings->NewStringAtom(names[i].method);
    KAPStringAtom* const procedure = strings->NewStringAtom(names[i].procedure);
    void* proc = NULL;
    if (method && procedure) {
      errors->Release(containers->GetMethod(&proc, container, method, procedure, 0));
    }
    strings->DeleteStringAtom(procedure);
    strings->DeleteStringAtom(method);
    memcpy(place, &proc, sizeof proc);
    if (!proc) complete = 0;
  }
  return complete;
}

/* Registers `count` procedures, stored as KAPLoadProcs stores them. Returns 1 when all are
 * registered. Else returns 0, and the caller unregisters the interface as it does at its end. */
KAP_CHECKED static inline int KAPRegisterProcs(const void* procs, const char* interfaceName,
                                               const KAPProcName* names, size_t count,
                                               const KAPBinderInterfaceProcs* binder) {
  const unsigned char* place = KAP_CAST(const unsigned char*, procs);
  for (size_t i = 0; i < count; ++i, place += sizeof(void*)) {
    void* proc;
    memcpy(&proc, place, sizeof proc);
    if (!binder->KAPRegisterProcAddress(interfaceName, names[i].method, names[i].procedure, proc)) {
      return 0;
    }
  }
  return 1;
}

/* What KAP_TABLE_FUNCTIONS makes of each method. */
#define KAP_PROC_NAME(method, procedure) {#method, procedure},
#define KAP_COUNT_METHOD(method, procedure) +1
#define KAP_SLOT(method, procedure) void (*method)(void);
#define KAP_CHECK_SLOT(method, procedure) \
  static_assert(offsetof(KAPCheckedProcs, method) == offsetof(KAPSlots, method), \
                #method " is not in its slot");

/* The functions ...Load, ...LoadFrom and ...Register of an interface. Its structure must have a
 * procedure for each method, in the order of the methods. */
#define KAP_TABLE_FUNCTIONS(Interface)                                                            \
  static_assert(sizeof(Interface##Procs) ==                                                       \
                    (0 Interface##_METHODS(KAP_COUNT_METHOD)) * sizeof(void (*)(void)),           \
                #Interface "Procs does not have one procedure for each of the methods");          \
  KAP_CHECKED static inline int Interface##Load(Interface##Procs* procs,                          \
                                                KAPGetProcAddressProc getProc) {                  \
    typedef Interface##Procs KAPCheckedProcs;                                                     \
    typedef struct KAPSlotList {                                                                  \
      Interface##_METHODS(KAP_SLOT)                                                               \
    } KAPSlots;                                                                                   \
    Interface##_METHODS(KAP_CHECK_SLOT)                                                           \
    static const KAPProcName names[] = {Interface##_METHODS(KAP_PROC_NAME)};                      \
    return KAPLoadProcs(procs, Interface##_NAME, names, sizeof names / sizeof *names, getProc);   \
  }                                                                                               \
  KAP_CHECKED static inline int Interface##LoadFrom(                                              \
      Interface##Procs* procs, const KAPContainerInterfaceProcs* containers,                      \
      const KAPStringInterfaceProcs* strings, const KAPErrorInterfaceProcs* errors,               \
      KAPContainer* container) {                                                                  \
    static const KAPProcName names[] = {Interface##_METHODS(KAP_PROC_NAME)};                      \
    return KAPLoadMethods(procs, names, sizeof names / sizeof *names, containers, strings, errors,\
                          container);                                                             \
  }                                                                                               \
  KAP_CHECKED static inline int Interface##Register(const Interface##Procs* procs,                \
                                                    const KAPBinderInterfaceProcs* binder) {      \
    static const KAPProcName names[] = {Interface##_METHODS(KAP_PROC_NAME)};                      \
    return KAPRegisterProcs(procs, Interface##_NAME, names, sizeof names / sizeof *names, binder);\
  }
KAPUTILS_INTERFACES(KAP_TABLE_FUNCTIONS)

// NOLINTEND(modernize-*)
// clang-format on
