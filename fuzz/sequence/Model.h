// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "pos/POSKinds.h"

// A simple model of property objects, to compare the library with. Like those, values share their
// parts by reference.
struct Model;
using ModelRef = std::shared_ptr<Model>;

struct Model {
  KAP_T_MT::POSType fType;
  std::string fScalar;                       // what a scalar holds, as text
  std::vector<ModelRef> fElements;           // of an array; null for an empty slot
  std::map<std::string, ModelRef> fEntries;  // of a dictionary, in byte order

  bool IsContainer() const { return !KAP_T_MT::POSIsScalar(fType); }
};

// The contract of Clone: containers are copied at every level, scalars are shared.
ModelRef CloneOf(const ModelRef& value);

// The contract of IsEqual: a dictionary equals one that has more entries.
bool AreEqual(const ModelRef& a, const ModelRef& b);

// The number of values, where a shared one counts at every place; at most `limit`.
std::size_t SizeOf(const ModelRef& value, std::size_t limit);

// Returns whether `part` is the value or a part of it.
bool Contains(const ModelRef& value, const ModelRef& part);

// Returns whether `accepts` is true for every value. An empty slot is a null value.
bool All(const ModelRef& value, bool (*accepts)(const ModelRef&));
