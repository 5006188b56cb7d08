// SPDX-License-Identifier: MIT
#include "commands/values/Slot.h"

#include <utility>
#include <vector>

#include "POSDict.h"
#include "base/Printable.h"
#include "commands/values/Values.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

CPOSObject NewContainer(const Path::Step& step) {
  // A number in a pointer may be a key, too; far more often it is an index.
  const bool isArray = step.fKind == Path::Step::kIndex || IndexIn(step, 0) != kNoIndex;
  if (isArray) return CPOSArray::New();
  return CPOSDict::New();
}

std::string Shown(const ValuePath& steps) {
  return steps.empty() ? "the document" : "\"" + Printable(UsablePath(steps)) + "\"";
}

}  // namespace

Slot::Slot(CPOSObject& root, const Path& path, Missing missing) : fRoot(&root) {
  if (!path.IsWellFormed()) throw PathError("malformed path");
  for (const Path::Step& step : path.StepsFrom(root)) Enter(step, missing);
}

void Slot::Enter(const Path::Step& step, Missing missing) {
  CPOSObject container = Value();
  if (container.IsNull()) {
    if (missing == Missing::kRefused) throw PathError("there is no " + Shown(fSteps));
    container = NewContainer(step);
    Put(container);
  }
  if (CPOSDict(container, true).Handle() && step.fKind != Path::Step::kIndex) {
    fSteps.emplace_back(step.fText);
  } else if (const CPOSArray array(container, true);
             !array.IsNull() && step.fKind != Path::Step::kKey) {
    const std::size_t count = array.Count();
    const std::size_t index = IndexIn(step, count);
    if (index > count) {
      throw PathError(Shown(fSteps) + " is an array of " + std::to_string(count));
    }
    fSteps.emplace_back(index);
  } else {
    FailAt(container);
  }
  fContainer = std::move(container);
}

void Slot::FailAt(const CPOSObject& value) const {
  throw PathError(Shown(fSteps) + " is " + KindText(value.GetType()));
}

bool Slot::Exists() const {
  if (fSteps.empty() || IsMember()) return !Value().IsNull();
  return fSteps.back().fIndex < CPOSArray(fContainer).Count();
}

CPOSObject Slot::Value() const {
  if (fSteps.empty()) return *fRoot;
  if (IsMember()) return CPOSDict(fContainer).Get(fSteps.back().fKey, true);
  return CPOSArray(fContainer).GetAt(fSteps.back().fIndex, true);
}

void Slot::Put(const CPOSObject& value) {
  if (fSteps.empty()) {
    *fRoot = value;
  } else if (IsMember()) {
    CPOSDict dict(fContainer);
    value.IsNull() ? dict.Remove(CKAPStringAtom(std::string_view(fSteps.back().fKey)))
                   : dict.Put(fSteps.back().fKey, value);
  } else {
    CPOSArray array(fContainer);
    const std::size_t index = fSteps.back().fIndex;
    if (!value.IsNull()) return array.SetAt(index, value);
    std::vector<CPOSObject> end = ValuesFrom(array, index);
    end.resize(std::max<std::size_t>(end.size(), 1));
    end.front() = value;
    ReplaceFrom(array, index, end);
  }
}

void Slot::Insert(const CPOSObject& value) {
  if (fSteps.empty() || IsMember()) return Put(value);
  CPOSArray array(fContainer);
  const std::size_t index = fSteps.back().fIndex;
  std::vector<CPOSObject> end = ValuesFrom(array, index);
  end.insert(end.begin(), value);
  ReplaceFrom(array, index, end);
}

void Slot::Remove() {
  if (fSteps.empty() || IsMember()) return Put(CPOSObject());
  CPOSArray(fContainer).Remove(fSteps.back().fIndex);
}

}  // namespace PosUtil
