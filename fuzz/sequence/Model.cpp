// SPDX-License-Identifier: MIT
#include "sequence/Model.h"

#include <algorithm>

using namespace KAP_T_MT;

namespace {

// Calls `visit` for the value and then for its parts, until it returns false.
template <class Visit>
bool Walk(const ModelRef& value, Visit& visit) {
  if (!visit(value)) return false;
  if (!value) return true;
  const auto walk = [&](const ModelRef& part) { return Walk(part, visit); };
  return std::all_of(value->fElements.begin(), value->fElements.end(), walk) &&
         std::all_of(value->fEntries.begin(), value->fEntries.end(),
                     [&](const auto& entry) { return walk(entry.second); });
}

}  // namespace

ModelRef CloneOf(const ModelRef& value) {
  if (!value || !value->IsContainer()) return value;
  auto clone = std::make_shared<Model>(*value);
  for (ModelRef& element : clone->fElements) element = CloneOf(element);
  for (auto& [key, entry] : clone->fEntries) entry = CloneOf(entry);
  return clone;
}

bool AreEqual(const ModelRef& a, const ModelRef& b) {
  if (!a || !b) return !a && !b;
  if (a->fType != b->fType) return false;
  if (a->fType == kPOSDict) {
    return std::all_of(a->fEntries.begin(), a->fEntries.end(), [&](const auto& entry) {
      const auto other = b->fEntries.find(entry.first);
      return other != b->fEntries.end() && AreEqual(entry.second, other->second);
    });
  }
  return a->fScalar == b->fScalar &&
         std::equal(a->fElements.begin(), a->fElements.end(), b->fElements.begin(),
                    b->fElements.end(), &AreEqual);
}

std::size_t SizeOf(const ModelRef& value, std::size_t limit) {
  std::size_t size = 0;
  auto count = [&](const ModelRef&) { return ++size < limit; };
  Walk(value, count);
  return size;
}

bool Contains(const ModelRef& value, const ModelRef& part) {
  auto differs = [&](const ModelRef& each) { return each != part; };
  return !Walk(value, differs);
}

bool All(const ModelRef& value, bool (*accepts)(const ModelRef&)) { return Walk(value, accepts); }
