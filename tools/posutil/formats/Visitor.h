#pragma once

#include <cstddef>
#include <string>

#include "pos/POSObject.h"

namespace PosUtil {

// Where a value stands.
struct Place {
  std::size_t fDepth = 0;      // 0 for the document itself
  const char* fKey = nullptr;  // in a dictionary
  std::size_t fIndex = 0;      // in an array; in a dictionary, how many entries stand before it
};

// A property object, piece by piece. Each call may throw ValueError for what cannot be held.
class Visitor {
 public:
  // Before each value and each empty slot.
  virtual void At(const Place& place) = 0;

  virtual void Number(double value) = 0;
  virtual void String(const char* text) = 0;
  virtual void UnicodeString(const unsigned short* units) = 0;
  virtual void BinData(const char* typeName, const unsigned char* data, std::size_t size) = 0;
  virtual void RawPointer(const void* pointer) = 0;
  virtual void EmptySlot() = 0;

  virtual void BeginArray(std::size_t count) = 0;
  virtual void BeginDict() = 0;
  // `place` is that of the container, `count` tells how many values there were in it.
  virtual void EndArray(const Place& place, std::size_t count) = 0;
  virtual void EndDict(const Place& place, std::size_t count) = 0;

 protected:
  ~Visitor() = default;
};

// Leads the visitor through the object; nesting of any depth needs no stack. Throws Failure: a ValueError becomes one
// that names `document` and the path.
void Visit(const KAP_T_MT::CPOSObject& object, const std::string& document, Visitor& visitor);

}  // namespace PosUtil
