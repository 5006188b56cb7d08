// SPDX-License-Identifier: MIT
#include "formats/Visitor.h"

#include <utility>
#include <vector>

#include "base/ValueError.h"
#include "formats/Handles.h"
#include "formats/TextCache.h"

namespace PosUtil {

namespace {

using KAP_T_MT::CPOSObject;
using KAP_T_MT::KAPAdopt;

// A container on the path from the document to the current value.
struct Level {
  CPOSObject fContainer;
  Handle fIterator;    // of a dictionary; empty for an array
  std::size_t fCount;  // of an array
  Place fPlace;
  Place fInside;  // of the current value
  std::size_t fVisited = 0;
};

class Walk {
 public:
  explicit Walk(Visitor& visitor) : fVisitor(visitor) {}

  void Run(const CPOSObject& object) {
    VisitValue(object, Place());
    while (!fLevels.empty()) {
      if (fLevels.back().fIterator.IsNull()) {
        StepInArray();
      } else {
        StepInDict();
      }
    }
  }

  ValuePath Path() const {
    ValuePath path;
    for (const Level& level : fLevels) {
      if (level.fIterator.IsNull()) {
        path.emplace_back(level.fInside.fIndex);
      } else if (level.fInside.fKey) {
        path.emplace_back(level.fInside.fKey);
      }
    }
    return path;
  }

 private:
  void VisitValue(const CPOSObject& object, const Place& place) {
    POSObject* const handle = object.Handle();
    fVisitor.At(place);
    // Without a default, so that the compiler finds a kind that is missing here.
    switch (static_cast<KAP_T_MT::POSType>(Objects::Call<"GetType">(handle))) {
      case KAP_T_MT::kPOSNumber:
        return fVisitor.Number(Numbers::Call<"Get">(handle));
      case KAP_T_MT::kPOSString:
        return fVisitor.String(NotNull(Strings::Call<"Get">(handle)));
      case KAP_T_MT::kPOSUnicodeString:
        return fVisitor.UnicodeString(NotNull(UnicodeStrings::Call<"Get">(handle)));
      case KAP_T_MT::kPOSBinData:
        return fVisitor.BinData(NotNull(BinDatas::Call<"GetTypeName">(handle)),
                                BinDatas::Call<"GetBinData">(handle),
                                BinDatas::Call<"GetSize">(handle));
      case KAP_T_MT::kPOSRawPointer:
        return fVisitor.RawPointer(RawPointers::Call<"GetRawPointer">(handle));
      case KAP_T_MT::kPOSArray:
        return EnterArray(object, place);
      case KAP_T_MT::kPOSDict:
        return EnterDict(object, place);
    }
    throw ValueError("the value has an unknown kind");
  }

  void EnterArray(const CPOSObject& array, const Place& place) {
    const std::size_t count = Arrays::Call<"Count">(array.Handle());
    fVisitor.BeginArray(count);
    fLevels.push_back({array, Handle(), count, place, {.fDepth = place.fDepth + 1}});
  }

  void EnterDict(const CPOSObject& dict, const Place& place) {
    Handle iterator = Owned(DictIterators::Call<"NewPOSDictIterator">(dict.Handle()));
    fVisitor.BeginDict(dict.Handle());
    fLevels.push_back({dict, std::move(iterator), 0, place, {.fDepth = place.fDepth + 1}});
  }

  void StepInArray() {
    Level& level = fLevels.back();
    if (level.fVisited == level.fCount) {
      fVisitor.EndArray(level.fPlace, level.fCount);
      fLevels.pop_back();
      return;
    }
    level.fInside.fIndex = level.fVisited++;
    const Place place = level.fInside;  // a copy: fLevels may move its elements
    POSObject* const element = Arrays::Call<"GetAt">(level.fContainer.Handle(), place.fIndex);
    if (element) {
      VisitValue(CPOSObject(element, KAPAdopt()), place);
    } else {
      fVisitor.At(place);
      fVisitor.EmptySlot();
    }
  }

  void StepInDict() {
    Level& level = fLevels.back();
    POSDictIterator* const iterator = level.fIterator.Handle();
    if (DictIterators::Call<"IsDone">(iterator)) {
      fVisitor.EndDict(level.fPlace, level.fVisited);
      fLevels.pop_back();
      return;
    }
    level.fInside.fKey = NotNull(DictIterators::Call<"CurKey">(iterator));
    level.fInside.fIndex = level.fVisited++;
    const Place place = level.fInside;
    const KAP_T_MT::CKAPStringAtom& key = fKeys.Get(place.fKey);
    POSObject* const value = Dicts::Call<"Get">(level.fContainer.Handle(), key.Handle());
    VisitValue(CPOSObject(NotNull(value), KAPAdopt()), place);
    DictIterators::Call<"Next">(iterator);
  }

  Visitor& fVisitor;
  KeyAtoms fKeys;
  std::vector<Level> fLevels;
};

}  // namespace

void Visit(const CPOSObject& object, const std::string& document, Visitor& visitor) {
  Walk walk(visitor);
  try {
    walk.Run(object);
  } catch (const ValueError& error) {
    throw ValueFailure(document, walk.Path(), error.what());
  }
}

}  // namespace PosUtil
