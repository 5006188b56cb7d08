// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

#include "pos/POSObject.h"

namespace PosUtil {

// The place of a value in its document.
struct Place {
  std::size_t fDepth = 0;      // 0 for the document itself
  const char* fKey = nullptr;  // of an entry of a dictionary; else null
  std::size_t fIndex = 0;      // in the array, or the number of entries before it
};

// Receives a property object piece by piece: a function for each kind. Every call may throw
// ValueError for a value that the format cannot hold.
class Visitor {
 public:
  // Comes before each value and each empty slot.
  virtual void At(const Place& place) = 0;

  virtual void Number(double value) = 0;
  virtual void String(const char* text) = 0;
  virtual void UnicodeString(const unsigned short* units) = 0;
  virtual void BinData(const char* typeName, const unsigned char* data, std::size_t size) = 0;
  virtual void RawPointer(const void* pointer) = 0;
  virtual void EmptySlot() = 0;

  virtual void BeginArray(std::size_t count) = 0;
  virtual void BeginDict(POSDict* dict) = 0;
  // `place` is the place of the container, `count` the number of its values.
  virtual void EndArray(const Place& place, std::size_t count) = 0;
  virtual void EndDict(const Place& place, std::size_t count) = 0;

 protected:
  ~Visitor() = default;
};

// Calls the visitor for every value, in the order of the document. The depth of the nesting does
// not use up the stack. Throws Failure; a ValueError becomes a ValueFailure about `document`.
void Visit(const KAP_T_MT::CPOSObject& object, const std::string& document, Visitor& visitor);

}  // namespace PosUtil
