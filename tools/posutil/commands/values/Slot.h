// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Loss.h"
#include "base/ValuePath.h"
#include "commands/values/ArrayEdit.h"
#include "commands/values/Path.h"
#include "pos/POSObject.h"

namespace PosUtil {

// A path leads nowhere in a document. The text is the reason.
class PathError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The place in a document to which a path leads: that of a value, or one where a value can be put.
// An empty object stands for no value: an empty slot, a missing member, a missing document. A
// change that the library rejects is a report; the caller checks for reports.
//
// Not a JSON library with pointers and patches, although those exist: the document would have to
// become JSON first, and that has no Unicode strings, no binary data and none of the texts that
// are not UTF-8.
class Slot {
 public:
  enum class Use {
    kFind,
    kMake,  // makes dictionaries on the way, and arrays where an index comes next
  };

  // `root` must outlive the slot; a change of the whole document changes it. `path` is well-formed.
  // With LossMode::kKeep a kept value is a scalar, and an escaped object is what JSON has. Changes
  // one after another share an `edit`, which must outlive the slot. Throws PathError.
  Slot(KAP_T_MT::CPOSObject& root, const Path& path, LossMode loss, Use use = Use::kFind,
       ArrayEdit* edit = nullptr);

  // The steps to this place.
  const ValuePath& Steps() const { return fSteps; }
  // Returns whether a value or an empty slot is here.
  bool Exists() const;
  KAP_T_MT::CPOSObject Value() const;

  // Puts a value here, in place of the one that is. An array grows by a value at its end. Without a
  // value, empties a slot of an array, and removes a member or the document.
  void Put(const KAP_T_MT::CPOSObject& value);
  // The same, but in an array the values from here on move up.
  void Insert(const KAP_T_MT::CPOSObject& value);
  // Takes the value out; in an array the later values move down.
  void Remove();
  // Returns whether this is a member of a dictionary, which cannot be empty.
  bool IsMember() const { return !fSteps.empty() && !fSteps.back().fIsIndex; }

 private:
  void Enter(const Path::Step& step);
  // The step leads nowhere from this value.
  [[noreturn]] void FailAt(const KAP_T_MT::CPOSObject& value, const Path::Step& step) const;
  // The container around the value. There is none around the document.
  const KAP_T_MT::CPOSObject& Container() const { return fContainers.back(); }
  // The slots of a container that is in the edit, else null.
  ArrayEdit::Slots* SlotsOf(const KAP_T_MT::CPOSObject& container) const {
    return fEdit ? fEdit->Find(container) : nullptr;
  }
  std::size_t CountOf(const KAP_T_MT::CPOSArray& array) const;
  // Calls `change` with the slots of the array around the value.
  template <class Change>
  void EditArray(Change change);
  void PutRaw(const KAP_T_MT::CPOSObject& value);
  // Puts the value at a step of a container.
  void PutAt(const KAP_T_MT::CPOSObject& container, const PathStep& step,
             const KAP_T_MT::CPOSObject& value);
  void EscapeContainers();

  KAP_T_MT::CPOSObject* fRoot;
  bool fKeepsValues;
  Use fUse;
  ArrayEdit* fEdit;
  std::vector<KAP_T_MT::CPOSObject> fContainers;  // one for each step, not escaped
  ValuePath fSteps;
};

}  // namespace PosUtil
