// SPDX-License-Identifier: MIT
#include "commands/changes/Change.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "POSDict.h"
#include "commands/changes/DeepCopy.h"
#include "commands/documents/FormatOption.h"
#include "commands/values/StepTree.h"
#include "commands/values/Values.h"
#include "files/InputFile.h"
#include "formats/json/JsonReader.h"
#include "formats/json/NullMark.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

std::unique_ptr<Documents> Open(const Reader& reader, const std::string& fileName,
                                Session& session) {
  session.TheLibrary();
  if (std::string_view(reader.kName) != "json") {
    return OpenDocuments(reader, fileName, Extent::kOne, session, Text::kKept);
  }
  return WithReports(OpenJsonWithNulls(fileName, session), InputName(fileName), session);
}

std::unique_ptr<Documents> OpenText(const std::string& name, const std::string& json,
                                    Session& session) {
  session.TheLibrary();
  return WithReports(OpenJsonText(name, json, session), name, session);
}

// A container inside of a change.
struct Part {
  CPOSObject fContainer;
  StepTree::Node fNode;
};

// Removes the members that are null marks, and returns their keys.
std::vector<std::string> TakeNullKeys(CPOSDict& dict) {
  std::vector<std::string> keys;
  for (CPOSDictIterator i(dict); !i.IsDone(); i.Next()) {
    if (IsNullMark(dict.Get(i.CurKey(), true))) keys.emplace_back(i.CurKey());
  }
  for (const std::string& key : keys) dict.Remove(key.c_str());
  return keys;
}

void EmptyNullSlots(CPOSArray& array) {
  std::vector<CPOSObject> values = ValuesFrom(array, 0);
  const auto first = std::find_if(values.begin(), values.end(), IsNullMark);
  if (first == values.end()) return;
  std::replace_if(first, values.end(), IsNullMark, CPOSObject());
  ReplaceFrom(array, 0, values);
}

// A copy of the value without null marks. Calls `lose` with the path to each member that it drops.
template <class Lose>
CPOSObject Settle(const CPOSObject& value, const ValuePath& place, Lose lose) {
  if (value.IsNull() || IsNullMark(value)) return {};
  CPOSObject copy = DeepCopy(value);
  StepTree steps;
  StepTree::Node root = StepTree::kRoot;
  for (const PathStep& step : place) root = steps.Add(root, step);
  std::vector<Part> parts = {{copy, root}};
  const auto visit = [&](const CPOSObject& inner, StepTree::Node node, PathStep step) {
    if (IsContainer(inner)) parts.push_back({inner, steps.Add(node, std::move(step))});
  };
  while (!parts.empty()) {
    const Part part = std::move(parts.back());
    parts.pop_back();
    if (CPOSDict dict(part.fContainer, true); !dict.IsNull()) {
      for (const std::string& key : TakeNullKeys(dict)) {
        lose(steps.PathTo(steps.Add(part.fNode, PathStep(key))));
      }
      for (CPOSDictIterator i(dict); !i.IsDone(); i.Next()) {
        visit(dict.Get(i.CurKey(), true), part.fNode, PathStep(i.CurKey()));
      }
    } else if (CPOSArray array(part.fContainer, true); !array.IsNull()) {
      EmptyNullSlots(array);
      const std::size_t count = array.Count();
      for (std::size_t i = 0; i < count; ++i) visit(array.GetAt(i, true), part.fNode, PathStep(i));
    }
  }
  return copy;
}

}  // namespace

Change::Change(const Reader& reader, const std::string& fileName, Session& session)
    : Change(&reader, InputName(fileName), Open(reader, fileName, session), session) {}

Change::Change(std::string name, const std::string& json, Session& session)
    : Change(FindFormat<Reader>("json"), name, OpenText(name, json, session), session) {}

Change::Change(const Reader* reader, std::string name, std::unique_ptr<Documents> documents,
               Session& session)
    : fSession(session), fName(std::move(name)), fDocuments(std::move(documents)) {
  fObject = fDocuments->Next();
  fPlaces.emplace(*reader, fDocuments->LastText());
}

Change::Change(const CPOSObject& object, Session& session) : fSession(session), fObject(object) {}

bool Change::IsNull(const CPOSObject& value) const {
  return value.IsNull() || IsNullMark(value) || (KeepsValues() && IsKeptNull(value));
}

void Change::Put(Slot& slot, const CPOSObject& value, const ValuePath& place) {
  const CPOSObject settled = Settled(value, place);
  if (settled.IsNull() && slot.IsMember()) LoseMember(place);
  slot.Put(settled);
}

void Change::Insert(Slot& slot, const CPOSObject& value, const ValuePath& place) {
  if (slot.IsMember()) return Put(slot, value, place);
  slot.Insert(Settled(value, place));
}

void Change::Move(Slot& slot, const CPOSObject& value, const ValuePath& place) {
  if (value.IsNull() && slot.IsMember()) LoseMember(place);
  slot.Insert(value);
}

CPOSObject Change::Settled(const CPOSObject& value, const ValuePath& place) {
  return Settle(value, place, [this](const ValuePath& member) { LoseMember(member); });
}

CPOSObject Change::Copy(const CPOSObject& value) const {
  return Settle(value, {}, [](const ValuePath&) {});
}

void Change::FailAt(const ValuePath& place, const std::string& message) {
  throw fPlaces->ErrorAt(fName, place, message);
}

void Change::ReportLosses() {
  fSession.ReportLosses(fLosses);
  fIsReported = fHasLosses;
}

void Change::LoseMember(const ValuePath& place) {
  if (fIsReported) return;
  fHasLosses = true;
  fLosses.Add(LossKind::kNull, [&] {
    return Losses::First{NameOfPlace(fName, fPlaces->PlaceOf(place, Positions::kValue)),
                         "a member with the value null is dropped"};
  });
}

}  // namespace PosUtil
