#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/Handles.h"
#include "formats/TextCache.h"
#include "formats/json/TaggedJson.h"
#include "pos/POSObject.h"

namespace PosUtil {

// Builds a property object from the pieces of a JSON text, in the order of the text. The depth of
// the nesting does not use up the stack. Texts are well-formed UTF-8.
// Errors: every call may throw ValueError for a value that an object cannot hold; Path then returns
//   its place.
class JsonBuilder {
 public:
  void Null();
  void Number(double value);
  void Signed(long long value);
  void Unsigned(unsigned long long value);
  // An integer with too many digits for the integer types.
  void Integer(std::string_view digits, double nearest);
  void String(std::string_view text);

  void BeginArray();
  void EndArray();
  void BeginObject();
  void Key(std::string_view key);
  void EndObject();

  // The path to the place of the next piece; empty for the document itself.
  std::string Path() const;
  // The object. Call it after the last piece.
  KAP_T_MT::CPOSObject Take();

 private:
  enum class Kind : char {
    kArray,
    kObject,  // a dictionary or a tagged value: its first member decides
    kDict,
    kTagged,
  };

  // An array or object that has not ended yet.
  struct Level {
    Kind fKind;
    bool fEndsEmpty;                     // of an array: its last slots are empty and not yet there
    std::size_t fCount;                  // of slots, or of members including repeated ones
    Handle fContainer;                   // none for kObject and kTagged
    KAP_T_MT::CKAPStringAtom fOuterKey;  // its own key in the dictionary around it
  };

  void Open(Kind kind, Handle container);
  void Close(Handle&& value);
  void Attach(const Handle& value);
  TaggedJson BeginTagged(const Level& object, std::string_view key);
  static void FillEmptyEnd(const Level& array);

  std::vector<Level> fLevels;
  const KAP_T_MT::CKAPStringAtom* fKey = nullptr;  // of the member whose value comes next
  std::optional<TaggedJson> fTagged;               // if the innermost object is a tagged value
  KeyAtoms fKeys;
  TextCache<Handle> fStrings;           // strings are immutable, so equal ones share an object
  KAP_T_MT::CKAPStringAtom fClosedKey;  // the target of fKey after the end of a container
  Handle fRoot;
};

}  // namespace PosUtil
