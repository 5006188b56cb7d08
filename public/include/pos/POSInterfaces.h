#pragma once

#include "kap/KAPInterface.h"

// The interfaces of property objects, as they are registered with the binder.
//
// Conventions of every procedure: a failure is reported to the binder and gives null, false or 0
// (IsDone: true). Handles and atoms passed in are borrowed for the call; a returned handle carries
// one new reference for the caller. Any number of threads may read an object that nobody changes;
// whoever changes an array or a dictionary must be alone.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// What GetType answers.
enum POSType : int {
  kPOSNumber = 1,
  kPOSString = 2,
  kPOSUnicodeString = 3,
  kPOSBinData = 4,
  kPOSRawPointer = 5,
  kPOSArray = 6,
  kPOSDict = 7
};

// Gives back what a raw pointer points to, when its object is destroyed. Must not throw; it may
// call the library. What it releases itself while more than 30 nested objects are being released
// goes at the end of the outermost release.
using POSReleaseProc = void (*)(void* pointer);

struct POSObjectInterface
    : TKAPInterface<
          "POSObjectInterface",
          // A scalar cannot change and is its own clone: the very handle that was given, with no
          // reference added, deliberately. Arrays and dictionaries are cloned all the way down into
          // a new handle.
          TKAPMethod<"Clone", "POSObjectCloneProc", POSObject*(POSObject* object)>,
          // False, with nothing reported, when `other` is null or no property object. A dictionary
          // equals one that holds more than it does, deliberately: the entries of `object` decide.
          TKAPMethod<"IsEqual", "POSObjectIsEqualProc", bool(POSObject* object, POSObject* other)>,
          TKAPMethod<"GetType", "POSObjectGetTypeProc", int(POSObject* object)>> {};

struct POSObjectStatics
    : TKAPInterface<"POSObjectStatics",
                    // Deliberate no-ops but for the check of the handle: they write nothing.
                    TKAPMethod<"DebugDump", "POSObjectDebugDumpProc", void(POSObject* object)>,
                    TKAPMethod<"DebugDumpWithHeader", "POSObjectDebugDumpWithHeaderProc",
                               void(POSObject* object, const char* header)>,
                    TKAPMethod<"DebugDumpRewind", "POSObjectDebugDumpRewindProc",
                               void(POSObject* object, const char* header)>,
                    // The object written in `text`, with `*end` null. A syntax error: null, nothing
                    // reported, and `*end` where the reader stopped; any other failure is reported.
                    // `end` may be null. All or nothing.
                    TKAPMethod<"CreateFromText", "POSObjectCreateFromTextProc",
                               POSObject*(const char* text, const char** end)>> {};

struct POSNumberInterface
    : TKAPInterface<
          "POSNumberInterface",
          TKAPMethod<"NewPOSNumber", "POSNumberNewPOSNumberProc", POSNumber*(double value)>,
          TKAPMethod<"IsPOSNumber", "POSNumberIsPOSNumberProc", bool(POSObject* object)>,
          TKAPMethod<"Get", "POSNumberGetProc", double(POSNumber* number)>> {};

struct POSStringInterface
    : TKAPInterface<
          "POSStringInterface",
          TKAPMethod<"NewPOSString", "POSStringNewPOSStringProc", POSString*(const char* text)>,
          TKAPMethod<"IsPOSString", "POSStringIsPOSStringProc", bool(POSObject* object)>,
          // The text lives as long as the object.
          TKAPMethod<"Get", "POSStringGetProc", const char*(POSString* string)>> {};

struct POSUnicodeStringInterface
    : TKAPInterface<"POSUnicodeStringInterface",
                    // 16-bit units up to a zero unit.
                    TKAPMethod<"NewPOSUnicodeString", "POSUnicodeStringNewPOSUnicodeStringProc",
                               POSUnicodeString*(const unsigned short* text)>,
                    TKAPMethod<"IsPOSUnicodeString", "POSUnicodeStringIsPOSUnicodeStringProc",
                               bool(POSObject* object)>,
                    // The units, with a terminating zero unit, live as long as the object.
                    TKAPMethod<"Get", "POSUnicodeStringGetProc",
                               const unsigned short*(POSUnicodeString* string)>> {};

struct POSBinDataInterface
    : TKAPInterface<
          "POSBinDataInterface",
          // Copies `size` bytes; for none, `data` may be null.
          TKAPMethod<"NewPOSBinData", "POSBinDataNewPOSBinDataProc",
                     POSBinData*(const char* typeName, const unsigned char* data,
                                 unsigned long size)>,
          TKAPMethod<"IsPOSBinData", "POSBinDataIsPOSBinDataProc", bool(POSObject* object)>,
          // Name and bytes live as long as the object. No bytes: the pointer is null.
          TKAPMethod<"GetTypeName", "POSBinDataGetTypeNameProc", const char*(POSBinData* data)>,
          TKAPMethod<"GetBinData", "POSBinDataGetBinDataProc",
                     const unsigned char*(POSBinData* data)>,
          TKAPMethod<"GetSize", "POSBinDataGetSizeProc", unsigned long(POSBinData* data)>> {};

struct POSRawPointerInterface
    : TKAPInterface<"POSRawPointerInterface",
                    // `release` (may be null) is called with the pointer when the object is
                    // destroyed; when the object cannot be made the pointer stays the caller's and
                    // nothing is called.
                    TKAPMethod<"NewPOSRawPointer", "POSRawPointerNewPOSRawPointerProc",
                               POSRawPointer*(void* pointer, POSReleaseProc release)>,
                    TKAPMethod<"IsPOSRawPointer", "POSRawPointerIsPOSRawPointerProc",
                               bool(POSObject* object)>,
                    TKAPMethod<"GetRawPointer", "POSRawPointerGetRawPointerProc",
                               void*(POSRawPointer* pointer)>,
                    // The doubled "Proc" is deliberate: it follows from the method's name.
                    TKAPMethod<"GetReleaseProc", "POSRawPointerGetReleaseProcProc",
                               POSReleaseProc(POSRawPointer* pointer)>> {};

struct POSArrayInterface
    : TKAPInterface<
          "POSArrayInterface", TKAPMethod<"NewPOSArray", "POSArrayNewPOSArrayProc", POSArray*()>,
          TKAPMethod<"IsPOSArray", "POSArrayIsPOSArrayProc", bool(POSObject* object)>,
          // Null, with nothing reported, behind the end and for an empty slot.
          TKAPMethod<"GetAt", "POSArrayGetAtProc",
                     POSObject*(POSArray* array, unsigned long index)>,
          TKAPMethod<"Count", "POSArrayCountProc", unsigned int(POSArray* array)>,
          // Behind the end the array grows; slots skipped over stay empty. An index of 2^32 - 1 or
          // more: "Math overflow exception".
          TKAPMethod<"SetAt", "POSArraySetAtProc",
                     void(POSArray* array, unsigned long index, POSObject* object)>,
          TKAPMethod<"Append", "POSArrayAppendProc", void(POSArray* array, POSObject* object)>,
          // Later elements move down. Nothing happens behind the end.
          TKAPMethod<"Remove", "POSArrayRemoveProc", void(POSArray* array, unsigned long index)>> {
};

struct POSDictInterface
    : TKAPInterface<
          "POSDictInterface", TKAPMethod<"NewPOSDict", "POSDictNewPOSDictProc", POSDict*()>,
          TKAPMethod<"IsPOSDict", "POSDictIsPOSDictProc", bool(POSObject* object)>,
          // Null, with nothing reported, when the key is absent; for DeepGet when the path leads
          // nowhere.
          TKAPMethod<"Get", "POSDictGetProc", POSObject*(POSDict* dict, KAPStringAtom* key)>,
          TKAPMethod<"DeepGet", "POSDictDeepGetProc",
                     POSObject*(POSDict* dict, KAPStringAtom* path)>,
          TKAPMethod<"Put", "POSDictPutProc",
                     void(POSDict* dict, KAPStringAtom* key, POSObject* object)>,
          // An absent key is no error.
          TKAPMethod<"Remove", "POSDictRemoveProc", void(POSDict* dict, KAPStringAtom* key)>> {};

// Walks a dictionary in the byte order of its keys. The iterator holds no reference: the dictionary
// must outlive it, and the entry that it stands on must not be removed.
struct POSDictIteratorInterface
    : TKAPInterface<
          "POSDictIteratorInterface",
          // Stands on the first entry.
          TKAPMethod<"NewPOSDictIterator", "POSDictIteratorNewPOSDictIteratorProc",
                     POSDictIterator*(POSDict* dict)>,
          TKAPMethod<"Begin", "POSDictIteratorBeginProc", void(POSDictIterator* iterator)>,
          TKAPMethod<"Next", "POSDictIteratorNextProc", void(POSDictIterator* iterator)>,
          TKAPMethod<"IsDone", "POSDictIteratorIsDoneProc", bool(POSDictIterator* iterator)>,
          // The key's text lives as long as the entry. Not to be called when done: null and a
          // report.
          TKAPMethod<"CurKey", "POSDictIteratorCurKeyProc",
                     const char*(POSDictIterator* iterator)>> {};

}  // namespace KAP_T_MT
