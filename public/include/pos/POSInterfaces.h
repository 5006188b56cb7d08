// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"
#include "pos/POSKinds.h"

// The interfaces of property objects, as they are registered with the binder. A component that uses
// the classes of POSDict.h needs none of this; one that is not written in C++, or that calls often
// enough to count, fetches the procedures and calls them itself:
//
//   POSArray* numbers = NewPOSArray();                    // one reference, the caller's
//   POSObject* one = NewPOSNumber(1);
//   Append(numbers, one);                                 // the array takes a reference of its own
//   Release(one);                                         // "Release" of KAPContainerInterface
//   POSObject* same = GetAt(numbers, 0);                  // a new reference
//   if (same && IsPOSNumber(same)) Use(Get(same));
//
// Conventions of every procedure:
//
// 1. A failure is reported to the binder and the result is null, false or 0 (for IsDone: true).
//    Nothing else changes: a call that fails leaves every object as it was. Where a contract says
//    that a case is quiet, it is not a failure, and nothing is reported.
// 2. A failing call reports at least once. "Clone" and "IsEqual" go through the library's own
//    objects directly, so that the number of reports does not grow with the depth: the first one is
//    the cause, and for the element of an object that is cloned a second one says so. An object of
//    another component is asked through its own procedures, which report as well.
// 3. Handles, atoms and texts passed in are borrowed for the call. A handle returned carries one
//    new reference for the caller; "Clone" of a scalar is the one exception.
// 4. A null handle, atom or text, and a handle of another kind, is a failure wherever the contract
//    does not allow it.
// 5. Each contract ends with a thread tag, see kap/KAPInterface.h. Objects have no lock. Reference
//    counts may change on any thread at any time.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Releases what a raw pointer points to, when the last reference to its object is released. Runs on
// the thread of that release. It must not throw; what it throws is reported to the binder. It may
// call the library, release objects included: what it releases is destroyed before "Release"
// returns, unless another reference exists. The stack is the limit: once release procedures are
// nested so deep in each other that it is nearly used up, what they release is destroyed later,
// before the outermost "Release" on the thread returns. [any thread]
using POSReleaseProc = void (*)(void* pointer);

// What objects of every kind have. The library's own objects offer these as methods of their
// container too, and so does any other component's implementation of property objects; CPOSObject
// asks the container, and so reaches both.
struct POSObjectInterface
    : TKAPInterface<
          "POSObjectInterface",
          // A copy that can change without the original. A scalar never changes and is its own
          // clone: the result is the handle passed in, without a new reference, deliberately. An
          // array or dictionary is cloned all the way down; empty slots stay empty. Null when it is
          // nested too deep for the stack of this thread. [shared read]
          TKAPMethod<"Clone", "POSObjectCloneProc", POSObject*(POSObject* object)>,
          // Whether both have the same kind and the same content. A dictionary equals one that
          // holds more than it does, deliberately: the entries of `object` decide. Quiet, and
          // false, when `other` is null or not a property object. [shared read]
          TKAPMethod<"IsEqual", "POSObjectIsEqualProc", bool(POSObject* object, POSObject* other)>,
          // The kind, a POSType; 0 on failure. [any thread]
          TKAPMethod<"GetType", "POSObjectGetTypeProc", int(POSObject* object)>> {};

// Procedures that are not methods of an object.
struct POSObjectStatics
    : TKAPInterface<
          "POSObjectStatics",
          // Deliberate no-op: checks the handle and writes nothing. [any thread]
          TKAPMethod<"DebugDump", "POSObjectDebugDumpProc", void(POSObject* object)>,
          // The same; `header` may be null. [any thread]
          TKAPMethod<"DebugDumpWithHeader", "POSObjectDebugDumpWithHeaderProc",
                     void(POSObject* object, const char* header)>,
          // The same; `header` may be null. [any thread]
          TKAPMethod<"DebugDumpRewind", "POSObjectDebugDumpRewindProc",
                     void(POSObject* object, const char* header)>,
          // The object that `text` describes, for example "< name (Anna) tags [a b] >", and null
          // in `*end`. A syntax error is quiet: the result is null, and `*end` points to where the
          // reader stopped. After any other failure, such as text nested too deep, `*end` points to
          // the position reached. `end` may be null. All or nothing. [any thread]
          TKAPMethod<"CreateFromText", "POSObjectCreateFromTextProc",
                     POSObject*(const char* text, const char** end)>> {};

// Numbers: doubles.
struct POSNumberInterface
    : TKAPInterface<
          "POSNumberInterface",
          // A number of this value, which may be infinite or not a number. [any thread]
          TKAPMethod<"NewPOSNumber", "POSNumberNewPOSNumberProc", POSNumber*(double value)>,
          // Whether the handle is a number of this library. Quiet for any other handle, and for
          // null. [any thread]
          TKAPMethod<"IsPOSNumber", "POSNumberIsPOSNumberProc", bool(POSObject* object)>,
          // The value. [any thread]
          TKAPMethod<"Get", "POSNumberGetProc", double(POSNumber* number)>> {
  static constexpr POSType kType = kPOSNumber;  // the kind of its objects
};

// Strings of bytes in no particular encoding. Equal strings share one text.
struct POSStringInterface
    : TKAPInterface<
          "POSStringInterface",
          // A string of the bytes up to the terminator; the text is copied. [any thread]
          TKAPMethod<"NewPOSString", "POSStringNewPOSStringProc", POSString*(const char* text)>,
          // Whether the handle is a string of this library. Quiet for any other handle, and for
          // null. [any thread]
          TKAPMethod<"IsPOSString", "POSStringIsPOSStringProc", bool(POSObject* object)>,
          // The terminated text, borrowed: it lives as long as the object. [any thread]
          TKAPMethod<"Get", "POSStringGetProc", const char*(POSString* string)>> {
  static constexpr POSType kType = kPOSString;  // the kind of its objects
};

// Strings of 16-bit units, meant for UTF-16. The units are not checked.
struct POSUnicodeStringInterface
    : TKAPInterface<
          "POSUnicodeStringInterface",
          // A string of the units up to a zero unit; they are copied. [any thread]
          TKAPMethod<"NewPOSUnicodeString", "POSUnicodeStringNewPOSUnicodeStringProc",
                     POSUnicodeString*(const unsigned short* text)>,
          // Whether the handle is a Unicode string of this library. Quiet for any other handle, and
          // for null. [any thread]
          TKAPMethod<"IsPOSUnicodeString", "POSUnicodeStringIsPOSUnicodeStringProc",
                     bool(POSObject* object)>,
          // The units and a terminating zero unit, borrowed: they live as long as the object.
          // [any thread]
          TKAPMethod<"Get", "POSUnicodeStringGetProc",
                     const unsigned short*(POSUnicodeString* string)>> {
  static constexpr POSType kType = kPOSUnicodeString;  // the kind of its objects
};

// Bytes with the name of their type, which means something to their users only.
struct POSBinDataInterface
    : TKAPInterface<
          "POSBinDataInterface",
          // Binary data that copies `size` bytes; `data` may be null when `size` is 0.
          // [any thread]
          TKAPMethod<"NewPOSBinData", "POSBinDataNewPOSBinDataProc",
                     POSBinData*(const char* typeName, const unsigned char* data,
                                 unsigned long size)>,
          // Whether the handle is binary data of this library. Quiet for any other handle, and for
          // null. [any thread]
          TKAPMethod<"IsPOSBinData", "POSBinDataIsPOSBinDataProc", bool(POSObject* object)>,
          // The terminated name, borrowed: it lives as long as the object. [any thread]
          TKAPMethod<"GetTypeName", "POSBinDataGetTypeNameProc", const char*(POSBinData* data)>,
          // The bytes, borrowed: they live as long as the object. Null, quietly, when there are
          // none. [any thread]
          TKAPMethod<"GetBinData", "POSBinDataGetBinDataProc",
                     const unsigned char*(POSBinData* data)>,
          // How many bytes there are. [any thread]
          TKAPMethod<"GetSize", "POSBinDataGetSizeProc", unsigned long(POSBinData* data)>> {
  static constexpr POSType kType = kPOSBinData;  // the kind of its objects
};

// Pointers that the library does not follow, such as a host's own objects.
struct POSRawPointerInterface
    : TKAPInterface<
          "POSRawPointerInterface",
          // A raw pointer that owns what it points to: `release` is called with the pointer once,
          // when the object is destroyed. Both may be null. On failure the pointer stays the
          // caller's, and `release` is not called. [any thread]
          TKAPMethod<"NewPOSRawPointer", "POSRawPointerNewPOSRawPointerProc",
                     POSRawPointer*(void* pointer, POSReleaseProc release)>,
          // Whether the handle is a raw pointer of this library. Quiet for any other handle, and
          // for null. [any thread]
          TKAPMethod<"IsPOSRawPointer", "POSRawPointerIsPOSRawPointerProc",
                     bool(POSObject* object)>,
          // The pointer, which may be null. It stays the object's. [any thread]
          TKAPMethod<"GetRawPointer", "POSRawPointerGetRawPointerProc",
                     void*(POSRawPointer* pointer)>,
          // The release procedure, which may be null. The doubled "Proc" of the name is deliberate:
          // it follows from the method's name. [any thread]
          TKAPMethod<"GetReleaseProc", "POSRawPointerGetReleaseProcProc",
                     POSReleaseProc(POSRawPointer* pointer)>> {
  static constexpr POSType kType = kPOSRawPointer;  // the kind of its objects
};

// Sequences of slots, each a property object of any component or empty. Slots count from 0.
struct POSArrayInterface
    : TKAPInterface<
          "POSArrayInterface",
          // An array without slots. [any thread]
          TKAPMethod<"NewPOSArray", "POSArrayNewPOSArrayProc", POSArray*()>,
          // Whether the handle is an array of this library. Quiet for any other handle, and for
          // null. [any thread]
          TKAPMethod<"IsPOSArray", "POSArrayIsPOSArrayProc", bool(POSObject* object)>,
          // The object in the slot, a new reference. Null, quietly, past the end and for an empty
          // slot. [shared read]
          TKAPMethod<"GetAt", "POSArrayGetAtProc",
                     POSObject*(POSArray* array, unsigned long index)>,
          // How many slots there are, empty ones included. [shared read]
          TKAPMethod<"Count", "POSArrayCountProc", unsigned int(POSArray* array)>,
          // Puts the object into the slot, with a reference of the array's own, then releases what
          // was there. Past the end the array grows, and slots skipped over stay empty. An index of
          // 2^32 - 1 or more is the failure "Math overflow exception". [exclusive]
          TKAPMethod<"SetAt", "POSArraySetAtProc",
                     void(POSArray* array, unsigned long index, POSObject* object)>,
          // Adds a slot at the end, with a reference to the object. [exclusive]
          TKAPMethod<"Append", "POSArrayAppendProc", void(POSArray* array, POSObject* object)>,
          // Takes the slot out, then releases what was in it; later slots move down by one. Past
          // the end it is a quiet no-op. [exclusive]
          TKAPMethod<"Remove", "POSArrayRemoveProc", void(POSArray* array, unsigned long index)>> {
  static constexpr POSType kType = kPOSArray;  // the kind of its objects
};

// Maps from texts to property objects of any component. No value is empty.
struct POSDictInterface
    : TKAPInterface<
          "POSDictInterface",
          // A dictionary without entries. [any thread]
          TKAPMethod<"NewPOSDict", "POSDictNewPOSDictProc", POSDict*()>,
          // Whether the handle is a dictionary of this library. Quiet for any other handle, and for
          // null. [any thread]
          TKAPMethod<"IsPOSDict", "POSDictIsPOSDictProc", bool(POSObject* object)>,
          // The value of the key, a new reference. Null, quietly, when there is none.
          // [shared read]
          TKAPMethod<"Get", "POSDictGetProc", POSObject*(POSDict* dict, KAPStringAtom* key)>,
          // The value that a path such as "a.b[2].c" leads to, a new reference. Null, quietly, when
          // the path leads nowhere, whatever the reason; a host that fails on the way is one. An
          // index is taken modulo 2^32, deliberately. [shared read]
          TKAPMethod<"DeepGet", "POSDictDeepGetProc",
                     POSObject*(POSDict* dict, KAPStringAtom* path)>,
          // Sets the value of the key, with a reference of the dictionary's own, then releases the
          // value that the key had. [exclusive]
          TKAPMethod<"Put", "POSDictPutProc",
                     void(POSDict* dict, KAPStringAtom* key, POSObject* object)>,
          // Takes the key out, then releases its value. A quiet no-op for a key that is absent.
          // [exclusive]
          TKAPMethod<"Remove", "POSDictRemoveProc", void(POSDict* dict, KAPStringAtom* key)>> {
  static constexpr POSType kType = kPOSDict;  // the kind of its objects
};

// Walks a dictionary in the byte order of its keys:
//
//   POSDictIterator* i = NewPOSDictIterator(dict);
//   for (; !IsDone(i); Next(i)) Use(CurKey(i));
//   Release(i);
//
// An iterator holds no reference: the dictionary must outlive it. Entries may come and go during a
// walk, but the current entry of the iterator must not be removed.
struct POSDictIteratorInterface
    : TKAPInterface<
          "POSDictIteratorInterface",
          // An iterator at the first entry. [shared read]
          TKAPMethod<"NewPOSDictIterator", "POSDictIteratorNewPOSDictIteratorProc",
                     POSDictIterator*(POSDict* dict)>,
          // Goes to the first entry. Several threads may walk one dictionary, each with an iterator
          // of its own. [exclusive]
          TKAPMethod<"Begin", "POSDictIteratorBeginProc", void(POSDictIterator* iterator)>,
          // Goes to the next entry; past the last one the iterator is done and stays so.
          // [exclusive]
          TKAPMethod<"Next", "POSDictIteratorNextProc", void(POSDictIterator* iterator)>,
          // Whether the iterator is past the last entry. True also on failure, so that a loop
          // ends. [shared read]
          TKAPMethod<"IsDone", "POSDictIteratorIsDoneProc", bool(POSDictIterator* iterator)>,
          // The key of the entry, borrowed: it lives as long as the entry. A call on a
          // finished iterator is a failure. [shared read]
          TKAPMethod<"CurKey", "POSDictIteratorCurKeyProc",
                     const char*(POSDictIterator* iterator)>> {};

}  // namespace KAP_T_MT
