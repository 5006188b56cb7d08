#pragma once

#include <cstdint>

#include "pos/POSArray.h"
#include "pos/POSDictClient.h"
#include "pos/POSNumber.h"
#include "pos/POSString.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// The wrapper whose downcast tells that an object is not of the kind.
template <class Kind>
struct TWrapper;
template <>
struct TWrapper<Number> {
  using Type = KAP_T_MT::CPOSNumber;
};
template <>
struct TWrapper<String> {
  using Type = KAP_T_MT::CPOSString;
};
template <>
struct TWrapper<Array> {
  using Type = KAP_T_MT::CPOSArray;
};
template <>
struct TWrapper<Dict> {
  using Type = KAP_T_MT::CPOSDict;
};

// The wrappers' downcast without the way across the boundary: POSException for another kind.
template <class Kind>
const Kind& Downcast(const POSObject* object) {
  const Kind* instance = Kind::GetInstanceNoThrow(object);
  if (!instance) [[unlikely]]
    throw POSException(TWrapper<Kind>::Type::kDowncastFailed);
  return *instance;
}

// The element; POSException for an empty slot and behind the end.
inline const CPOSObject& ElementAt(const Array& array, std::uint32_t index) {
  const CPOSObject* element = array.Find(index);
  if (!element || element->IsNull()) [[unlikely]]
    throw POSException("CPOSArray::GetAt subscript failed");
  return *element;
}

inline AtomText TextAt(const Array& array, std::uint32_t index) {
  return Downcast<String>(ElementAt(array, index).Handle()).Get();
}

}  // namespace NPOSValidatorImpl
