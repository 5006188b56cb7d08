// SPDX-License-Identifier: MIT
#include <cstddef>
#include <string>

#include "sequence/Steps.h"

using namespace KAP_T_MT;

namespace {

constexpr unsigned kMaxIndex = 12;

std::string AnyKey(Choices& choices) { return choices.Of({"a", "b", "aa", "", "two words", "c"}); }

}  // namespace

void Append(Driver& driver) {
  Live* const array = driver.Any(kPOSArray);
  Live* const value = driver.ValueFor(array);
  if (!value) return;
  driver.Change(
      *array, [&](POSObject* object) { Arrays::Call<"Append">(object, value->Object()); },
      [&](Model& model) { model.fElements.push_back(value->fModel); });
}

void SetAt(Driver& driver) {
  Live* const array = driver.Any(kPOSArray);
  Live* const value = driver.ValueFor(array);
  if (!value) return;
  const std::size_t index = driver.fChoices.Below(kMaxIndex);
  driver.Change(
      *array, [&](POSObject* object) { Arrays::Call<"SetAt">(object, index, value->Object()); },
      [&](Model& model) {
        if (model.fElements.size() <= index) model.fElements.resize(index + 1);
        model.fElements[index] = value->fModel;
      });
}

void RemoveAt(Driver& driver) {
  Live* const array = driver.Any(kPOSArray);
  if (!array) return;
  const unsigned index = driver.fChoices.Below(kMaxIndex);
  driver.Change(
      *array, [&](POSObject* object) { Arrays::Call<"Remove">(object, index); },
      [&](Model& model) {
        auto& elements = model.fElements;
        if (index < elements.size()) elements.erase(elements.begin() + index);
      });
}

void Put(Driver& driver) {
  Live* const dict = driver.Any(kPOSDict);
  Live* const value = driver.ValueFor(dict);
  if (!value) return;
  const std::string key = AnyKey(driver.fChoices);
  const auto put = [&](POSObject* object) {
    const CKAPStringAtom atom(key.c_str());
    Dicts::Call<"Put">(object, atom.Handle(), value->Object());
  };
  driver.Change(*dict, put, [&](Model& model) { model.fEntries[key] = value->fModel; });
}

void RemoveKey(Driver& driver) {
  Live* const dict = driver.Any(kPOSDict);
  if (!dict) return;
  const std::string key = AnyKey(driver.fChoices);
  const auto remove = [&](POSObject* object) {
    const CKAPStringAtom atom(key.c_str());
    Dicts::Call<"Remove">(object, atom.Handle());
  };
  driver.Change(*dict, remove, [&](Model& model) { model.fEntries.erase(key); });
}

// The part becomes a live handle too, so that later steps change what containers share.
void GetAt(Driver& driver) {
  const Live* const array = driver.Any(kPOSArray);
  if (!array) return;
  const std::size_t index = driver.fChoices.Below(kMaxIndex);
  const auto& elements = array->fModel->fElements;
  const ModelRef model = index < elements.size() ? elements[index] : nullptr;
  KAPContainer* object = nullptr;
  const bool succeeded =
      driver.Try([&] { object = Arrays::Call<"GetAt">(array->Object(), index); });
  Expect(!object == (!model || !succeeded), "the slot has its value");
  driver.Add(object, model);
}

void DeepGet(Driver& driver) {
  const Live* const dict = driver.Any(kPOSDict);
  if (!dict) return;
  std::string path;
  ModelRef model = dict->fModel;
  for (unsigned depth = 1 + driver.fChoices.Below(3); depth > 0; --depth) {
    ModelRef next;
    if (driver.fChoices.Below(3) == 0) {
      const std::size_t index = driver.fChoices.Below(3);
      path += "[" + std::to_string(index) + "]";
      if (model && index < model->fElements.size()) next = model->fElements[index];
    } else {
      const std::string key = driver.fChoices.Of({"a", "b", "aa", "two words"});
      path += "." + key;
      if (model && model->fEntries.count(key) > 0) next = model->fEntries[key];
    }
    model = next;
  }
  if (path.front() == '[') return;  // an index is not a first segment
  KAPContainer* object = nullptr;
  driver.Try([&] {
    const CKAPStringAtom atom(path.c_str());
    object = Dicts::Call<"DeepGet">(dict->Object(), atom.Handle());
  });
  // Every failure on the way means that the path has no value, deliberately.
  Expect(object ? model != nullptr : !model || driver.fHasFired, "the path has its value");
  driver.Add(object, model);
}
