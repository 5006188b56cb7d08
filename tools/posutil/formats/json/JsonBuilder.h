// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/Handles.h"
#include "formats/TextCache.h"
#include "formats/json/TaggedJson.h"
#include "pos/POSObject.h"

namespace PosUtil {

// Builds property objects from the pieces of JSON texts, in the order of the text. The depth of the
// nesting does not use up the stack. Texts are well-formed UTF-8, with a zero byte after them.
// Errors: every call may throw ValueError for a value that an object cannot hold.
class JsonBuilder {
 public:
  void Null();
  void MarkNull();  // see NullMark.h
  void Number(double value);
  // Only a text with escapes may hold a zero character, which is an error.
  void String(std::string_view text, bool hasEscapes);
  // "true" or "false", which becomes a string.
  void Word(std::string_view word);
  // A value that property objects do not have; `json` is its text. See TaggedJson.h.
  void Kept(std::string_view json);

  void BeginArray();
  void EndArray();
  void BeginObject();
  // Returns whether the object has a member of this name; the next value replaces it.
  bool Key(std::string_view key, bool hasEscapes);
  void EndObject();

  // The path to the place of the next piece; empty for the document itself.
  std::string Path() const;
  // The object. Call it after the last piece; the next document may follow.
  KAP_T_MT::CPOSObject Take();
  // Forgets the document so far.
  void Drop();
  // With this, an object that looks like a kept value stays different from one.
  void EscapeKept() { fEscapesKept = true; }

 private:
  // An array or object that has not ended yet.
  struct Level {
    bool fIsArray;
    bool fEndsEmpty;        // of an array: its last slots are empty and not yet there
    TagForm fForm;          // of an object
    std::size_t fCount;     // of the slots of an array
    std::size_t fFirstKey;  // of an object, in fKeysSeen
    Handle fContainer;
    KAP_T_MT::CKAPStringAtom fOuterKey;  // its own key in the dictionary around it
  };

  void Open(bool isArray, Handle container);
  void Close(const Handle& value);
  void Attach(const Handle& value);
  void AttachString(std::string_view text);
  void RequireForm(bool isKept);
  bool HasManyKeys(const Level& object) const;
  bool IsRepeated(const Level& object, KAPStringAtom* key);
  void ForgetKey(const Level& object);
  Handle ValueOfTag(const Level& object);
  std::string MemberText(const Level& object, const char* key);
  static void FillEmptyEnd(const Level& array);

  std::vector<Level> fLevels;
  const KAP_T_MT::CKAPStringAtom* fKey = nullptr;  // of the member whose value comes next
  std::vector<KAPStringAtom*> fKeysSeen;           // of the open objects; the dictionaries own them
  KeyAtoms fKeys;
  TextCache<Handle> fStrings;           // strings are immutable, so equal ones share an object
  KAP_T_MT::CKAPStringAtom fClosedKey;  // the target of fKey after the end of a container
  Handle fRoot;
  bool fEscapesKept = false;
  bool fLastIsKept = false;  // the last value looks like a kept one
  Handle fLastPlain;         // the last object as a dictionary, if it is a tag
};

}  // namespace PosUtil
