// SPDX-License-Identifier: MIT
#include "commands/values/Slot.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "POSDict.h"
#include "base/Printable.h"
#include "commands/values/Values.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

std::string Shown(const ValuePath& steps) {
  return steps.empty() ? "the document" : "\"" + Printable(UsablePath(steps)) + "\"";
}

// Returns whether the text is a number, but has a sign or a leading zero.
bool IsMisspeltIndex(const std::string& text) {
  const bool hasSign = text.starts_with('-') || text.starts_with('+');
  const bool isNumber =
      text.size() > 1 && text.find_first_not_of("0123456789", hasSign ? 1 : 0) == std::string::npos;
  return isNumber && (hasSign || text[0] == '0');
}

}  // namespace

Slot::Slot(CPOSObject& root, const Path& path, LossMode loss, Use use, ArrayEdit* edit)
    : fRoot(&root), fKeepsValues(loss == LossMode::kKeep), fUse(use), fEdit(edit) {
  const bool isDict = root.GetType() == kPOSDict && !(fKeepsValues && IsKeptValue(root));
  for (const Path::Step& step : path.StepsFrom(isDict)) Enter(step);
  // The value may be around the array in the edit. One in that array is not.
  const bool isInEdit = !fContainers.empty() && SlotsOf(Container());
  if (fEdit && !isInEdit) fEdit->End();
}

std::size_t Slot::CountOf(const CPOSArray& array) const {
  const ArrayEdit::Slots* const slots = SlotsOf(array);
  return slots ? slots->size() : array.Count();
}

template <class Change>
void Slot::EditArray(Change change) {
  ArrayEdit own;
  change((fEdit ? *fEdit : own).Begin(CPOSArray(Container())));
  own.End();
}

void Slot::PutAt(const CPOSObject& container, const PathStep& step, const CPOSObject& value) {
  if (!step.fIsIndex) return CPOSDict(container).Put(step.fKey, value);
  ArrayEdit::Slots* const slots = SlotsOf(container);
  if (!slots) return CPOSArray(container).SetAt(step.fIndex, value);
  slots->resize(std::max(slots->size(), step.fIndex + 1));
  (*slots)[step.fIndex] = value;
}

void Slot::Enter(const Path::Step& step) {
  CPOSObject container = Value();
  if (container.IsNull()) {
    if (fUse != Use::kMake) throw PathError("there is no " + Shown(fSteps));
    // A number in a pointer may be a key, too; far more often it is an index.
    const bool isArray = step.fKind == Path::Step::kIndex || IndexIn(step, 0) != kNoIndex;
    if (isArray && IndexIn(step, 0) != 0) throw PathError("there is no " + Shown(fSteps));
    container = isArray ? CPOSObject(CPOSArray::New()) : CPOSObject(CPOSDict::New());
    Put(container);
  }
  if (fKeepsValues) {
    if (IsKeptValue(container)) FailAt(container, step);
    container = Unescaped(container);
  }
  if (CPOSDict(container, true).Handle() && step.fKind != Path::Step::kIndex) {
    fSteps.emplace_back(step.fText);
  } else if (const CPOSArray array(container, true);
             !array.IsNull() && step.fKind != Path::Step::kKey) {
    const std::size_t count = CountOf(array);
    const std::size_t index = IndexIn(step, count);
    if (index > count) FailAt(container, step);
    fSteps.emplace_back(index);
  } else {
    FailAt(container, step);
  }
  fContainers.push_back(std::move(container));
}

void Slot::FailAt(const CPOSObject& value, const Path::Step& step) const {
  std::string reason =
      Shown(fSteps) + " is " + KindText(value, fKeepsValues ? LossMode::kKeep : LossMode::kWarn);
  if (const CPOSArray array(value, true); !array.IsNull()) {
    reason += " of " + std::to_string(CountOf(array));
    if (step.fKind != Path::Step::kIndex && IsMisspeltIndex(step.fText)) {
      reason += ", and \"" + Printable(step.fText) + "\" is not an index";
    }
  }
  throw PathError(reason);
}

bool Slot::Exists() const {
  if (fSteps.empty() || IsMember()) return !Value().IsNull();
  return fSteps.back().fIndex < CountOf(CPOSArray(Container()));
}

CPOSObject Slot::Value() const {
  if (fSteps.empty()) return *fRoot;
  if (IsMember()) return CPOSDict(Container()).Get(fSteps.back().fKey, true);
  const std::size_t index = fSteps.back().fIndex;
  const ArrayEdit::Slots* const slots = SlotsOf(Container());
  if (!slots) return CPOSArray(Container()).GetAt(index, true);
  return index < slots->size() ? (*slots)[index] : CPOSObject();
}

void Slot::Put(const CPOSObject& value) {
  PutRaw(value);
  EscapeContainers();
}

void Slot::PutRaw(const CPOSObject& value) {
  if (fSteps.empty()) {
    *fRoot = value;
  } else if (!value.IsNull()) {
    PutAt(Container(), fSteps.back(), value);
  } else if (IsMember()) {
    CPOSDict(Container()).Remove(CKAPStringAtom(std::string_view(fSteps.back().fKey)));
  } else {
    EditArray([index = fSteps.back().fIndex](ArrayEdit::Slots& slots) {
      slots.resize(std::max(slots.size(), index + 1));
      slots[index] = CPOSObject();
    });
  }
}

void Slot::Insert(const CPOSObject& value) {
  if (fSteps.empty() || IsMember()) return Put(value);
  EditArray([&, index = fSteps.back().fIndex](ArrayEdit::Slots& slots) {
    slots.insert(slots.begin() + static_cast<std::ptrdiff_t>(index), value);
  });
}

void Slot::Remove() {
  if (fSteps.empty() || IsMember()) return Put(CPOSObject());
  const std::size_t index = fSteps.back().fIndex;
  if (ArrayEdit::Slots* const slots = SlotsOf(Container()); !slots) {
    CPOSArray(Container()).Remove(index);
  } else if (index < slots->size()) {
    slots->erase(slots->begin() + static_cast<std::ptrdiff_t>(index));
  }
}

// A dictionary may have come to look kept by a change, or have ceased to; and so may those around
// it.
void Slot::EscapeContainers() {
  if (!fKeepsValues) return;
  for (std::size_t i = fContainers.size(); i-- > 0;) {
    const CPOSObject escaped = Escaped(fContainers[i]);
    if (i == 0) {
      *fRoot = escaped;
    } else {
      PutAt(fContainers[i - 1], fSteps[i - 1], escaped);
    }
  }
}

}  // namespace PosUtil
