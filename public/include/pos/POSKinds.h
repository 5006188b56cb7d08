// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <iterator>

#include "kap/KAPTypes.h"

// The kinds of property object: the one list of them. The library and posutil are tied to it
// wherever they treat kinds one by one, so that a new kind cannot be forgotten there:
//
//   - A function of the kind is a `switch` over POSType without `default:`. The compiler names the
//     enumerator that is not handled.
//   - A table or a list of classes, one row or class a kind, is checked against kPOSTypes with
//     POSCoverEveryKind in a static_assert.
//
// Members named after kinds, such as CPOSDict::GetNumber, are not tied to it: nothing goes wrong
// without one.
//
// Example: a dispatch that no longer compiles once there is an eighth kind.
//
//   switch (static_cast<POSType>(object.GetType())) {
//     case kPOSNumber: return Write(CPOSNumber(object, false));
//     ...
//     case kPOSDict: return Write(CPOSDict(object, false));
//   }
//   throw Unknown();  // an object of another component may return any number

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// What "GetType" returns. The numbers are part of the interface: they never change, and a new kind
// takes the next one.
enum POSType : int {
  kPOSNumber = 1,
  kPOSString = 2,
  kPOSUnicodeString = 3,
  kPOSBinData = 4,
  kPOSRawPointer = 5,
  kPOSArray = 6,
  kPOSDict = 7
};

// All kinds, in the order of their numbers.
inline constexpr POSType kPOSTypes[] = {kPOSNumber,     kPOSString, kPOSUnicodeString, kPOSBinData,
                                        kPOSRawPointer, kPOSArray,  kPOSDict};

// How messages name a kind: "number", "Unicode string"; null for a number that is not a kind.
constexpr const char* POSTypeName(int type) noexcept {
  switch (static_cast<POSType>(type)) {
    case kPOSNumber:
      return "number";
    case kPOSString:
      return "string";
    case kPOSUnicodeString:
      return "Unicode string";
    case kPOSBinData:
      return "binary data";
    case kPOSRawPointer:
      return "raw pointer";
    case kPOSArray:
      return "array";
    case kPOSDict:
      return "dictionary";
  }
  return nullptr;
}

// Whether objects of the kind never change. Such objects are shared where others are cloned, and
// hold no property objects that the library follows.
constexpr bool POSIsScalar(POSType type) noexcept {
  switch (type) {
    case kPOSNumber:
    case kPOSString:
    case kPOSUnicodeString:
    case kPOSBinData:
    case kPOSRawPointer:
      return true;
    case kPOSArray:
    case kPOSDict:
      return false;
  }
  return false;
}

// The switch of POSTypeName knows every enumerator, so it shows whether the list is complete.
static_assert(
    [] {
      std::size_t listed = 0;
      for (int type = -1; type <= 1024; ++type) {
        if (!POSTypeName(type)) continue;
        if (listed == std::size(kPOSTypes) || kPOSTypes[listed++] != type) return false;
      }
      return listed == std::size(kPOSTypes);
    }(),
    "kPOSTypes does not list every kind of POSType in order");

// Whether the classes that have a `kType` stand for every kind, in the order of kPOSTypes. Classes
// without one, such as an interface that belongs to no kind, do not count.
template <class... Classes>
constexpr bool POSCoverEveryKind() noexcept {
  std::size_t next = 0;
  bool inOrder = true;
  const auto take = [&]<class Class>(const Class*) {
    if constexpr (requires { Class::kType; }) {
      inOrder = inOrder && next < std::size(kPOSTypes) && Class::kType == kPOSTypes[next++];
    }
  };
  (take(static_cast<const Classes*>(nullptr)), ...);
  return inOrder && next == std::size(kPOSTypes);
}

}  // namespace KAP_T_MT
