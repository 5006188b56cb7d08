// SPDX-License-Identifier: MIT
#include "commands/changes/JsonPatch.h"

#include <string>
#include <string_view>

#include "POSDict.h"
#include "base/Failure.h"
#include "base/Printable.h"
#include "commands/changes/DeepCopy.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

// Returns whether two values are the same; empty objects are. The library's equality ignores the
// members that only the second dictionary has.
bool IsSame(const CPOSObject& a, const CPOSObject& b) {
  if (a.IsNull() || b.IsNull()) return a.IsNull() == b.IsNull();
  return a.IsEqual(b) && b.IsEqual(a);
}

// An operation of a patch. Its members may come in any order; unknown ones mean nothing.
class Operation {
 public:
  Operation(Change& patch, const CPOSObject& object, std::size_t index, ArrayEdit& edit)
      : fPatch(patch), fDict(object, true), fIndex(index), fEdit(edit) {
    if (fDict.IsNull()) FailAsMalformed("is not a dictionary", Place());
    fName = Member("op");
    fPath = Member("path");
  }

  void Apply(CPOSObject& document) const {
    try {
      ApplyTo(document);
    } catch (const PathError& error) {
      throw Failure(Title() + ": " + error.what(), kExitNegative);
    }
  }

 private:
  void ApplyTo(CPOSObject& document) const {
    if (fName == "add") return Put(document, true);
    if (fName == "replace") return Put(document, false);
    if (fName == "test") return Test(document);
    if (fName == "remove") return ExistingSlot(document).Remove();
    if (fName == "move") return Move(document);
    if (fName == "copy") return Copy(document);
    FailAsMalformed("has the unknown op \"" + Printable(fName) + "\"", PlaceOf("op"));
  }

  void Put(CPOSObject& document, bool isNew) const {
    const CPOSObject value = Value();
    const ValuePath place = PlaceOf("value");
    if (isNew) {
      Slot slot = SlotAt(document);
      fPatch.Insert(slot, value, place);
    } else {
      Slot slot = ExistingSlot(document);
      fPatch.Put(slot, value, place);
    }
  }

  void Test(CPOSObject& document) const {
    const CPOSObject value = Value();
    const CPOSObject found = ExistingSlot(document).Value();
    const bool isSame =
        fPatch.IsNull(value) ? fPatch.IsNull(found) : IsSame(found, fPatch.Copy(value));
    if (!isSame) throw PathError("the value is different");
  }

  void Move(CPOSObject& document) const {
    const std::string from = Member("from");
    if (from == fPath) return static_cast<void>(ExistingSlot(document, "from", from));
    if (fPath.starts_with(from + "/")) throw PathError("the target is inside of the value");
    Slot source = ExistingSlot(document, "from", from);
    const CPOSObject value = source.Value();
    source.Remove();
    MoveTo(document, value);
  }

  void Copy(CPOSObject& document) const {
    const CPOSObject value = ExistingSlot(document, "from", Member("from")).Value();
    MoveTo(document, DeepCopy(value));
  }

  void MoveTo(CPOSObject& document, const CPOSObject& value) const {
    Slot slot = SlotAt(document);
    fPatch.Move(slot, value, PlaceOf("path"));
  }

  Slot SlotAt(CPOSObject& document) const { return SlotAt(document, "path", fPath); }
  // `member` is that of the operation with the pointer.
  Slot SlotAt(CPOSObject& document, const char* member, const std::string& pointer) const {
    const Path path = Path::Pointer(pointer);
    if (!path.IsWellFormed()) {
      FailAsMalformed("has the malformed path \"" + Printable(pointer) + "\"", PlaceOf(member));
    }
    return {document, path, fPatch.Loss(), Slot::Use::kFind, &fEdit};
  }
  Slot ExistingSlot(CPOSObject& document) const { return ExistingSlot(document, "path", fPath); }
  Slot ExistingSlot(CPOSObject& document, const char* member, const std::string& pointer) const {
    Slot slot = SlotAt(document, member, pointer);
    if (!slot.Exists()) throw PathError("there is no \"" + Printable(pointer) + "\"");
    return slot;
  }

  CPOSObject Value() const {
    const CPOSObject value = fDict.Get("value", true);
    if (value.IsNull()) FailAsMalformed("has no \"value\"", Place());
    return value;
  }
  std::string Member(const char* key) const {
    const CPOSString text = fDict.GetString(key, true);
    if (text.IsNull()) {
      FailAsMalformed("has no string \"" + std::string(key) + "\"", Place());
    }
    return text.Get();
  }
  std::string Number() const { return "operation " + std::to_string(fIndex + 1) + " of the patch"; }
  std::string Title() const { return Number() + " (" + fName + " \"" + Printable(fPath) + "\")"; }
  ValuePath Place() const { return {PathStep(fIndex)}; }
  ValuePath PlaceOf(const char* member) const { return {PathStep(fIndex), PathStep(member)}; }
  [[noreturn]] void FailAsMalformed(const std::string& fault, const ValuePath& place) const {
    fPatch.FailAt(place, Number() + ' ' + fault);
  }

  Change& fPatch;
  const CPOSDict fDict;
  const std::size_t fIndex;
  ArrayEdit& fEdit;
  std::string fName;
  std::string fPath;
};

}  // namespace

void ApplyJsonPatch(CPOSObject& document, Change& patch) {
  const CPOSArray operations(patch.Object(), true);
  if (operations.IsNull()) patch.FailAt({}, "the patch is not an array of operations");
  const std::size_t count = operations.Count();
  ArrayEdit edit;
  for (std::size_t i = 0; i < count; ++i) {
    Operation(patch, operations.GetAt(i, true), i, edit).Apply(document);
  }
  edit.End();
}

}  // namespace PosUtil
