#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/Handles.h"
#include "formats/KeyAtoms.h"
#include "formats/TextCache.h"
#include "formats/json/TaggedJson.h"
#include "pos/POSObject.h"

namespace PosUtil {

// Makes a property object of JSON, piece by piece, in the order of the text. Nesting of any depth needs no stack.
// Texts are well-formed UTF-8. Each call may throw ValueError for what an object cannot hold; Path then tells where.
class JsonBuilder {
 public:
  void Null();
  void Number(double value);
  void Signed(long long value);
  void Unsigned(unsigned long long value);
  // A number with more digits than the integer types have.
  void Integer(std::string_view digits, double nearest);
  void String(std::string_view text);

  void BeginArray();
  void EndArray();
  void BeginObject();
  void Key(std::string_view key);
  void EndObject();

  // The path to where the next piece belongs; empty for the document itself.
  std::string Path() const;
  // The object, once its last piece is there.
  KAP_T_MT::CPOSObject Take();

 private:
  enum class Kind : char {
    kArray,
    kObject,  // not yet known whether it is a dictionary
    kDict,
    kTagged,
  };

  // An array or object that is still open.
  struct Level {
    Kind fKind;
    bool fEndsEmpty;                     // of an array: its last slot is empty and not yet there
    std::size_t fCount;                  // of slots; of members, repeated ones too
    Handle fContainer;                   // none for kObject and kTagged
    KAP_T_MT::CKAPStringAtom fOuterKey;  // where it belongs in a dictionary
  };

  void Open(Kind kind, Handle container);
  void Close(Handle&& value);
  void Attach(const Handle& value);
  TaggedJson BeginTagged(const Level& object, std::string_view key);
  static void FillEmptyEnd(const Level& array);

  std::vector<Level> fLevels;
  const KAP_T_MT::CKAPStringAtom* fKey = nullptr;  // of the member that has no value yet
  std::optional<TaggedJson> fTagged;               // when the innermost object is one
  KeyAtoms fKeys;
  TextCache<Handle> fStrings;           // strings cannot change, so equal ones may share an object
  KAP_T_MT::CKAPStringAtom fClosedKey;  // what fKey points to for a container that has just ended
  Handle fRoot;
};

}  // namespace PosUtil
