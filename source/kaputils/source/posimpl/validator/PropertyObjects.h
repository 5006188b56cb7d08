// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "pos/POSArray.h"
#include "pos/POSDictClient.h"
#include "pos/POSNumber.h"
#include "pos/POSString.h"
#include "posimpl/base/SortableStringAtom.h"
#include "posimpl/objects/Array.h"
#include "posimpl/objects/BinData.h"
#include "posimpl/objects/Dict.h"
#include "posimpl/objects/Number.h"
#include "posimpl/objects/RawPointer.h"
#include "posimpl/objects/String.h"
#include "posimpl/objects/UnicodeString.h"

// The property objects that are validated and that schemas are made of. Their classes are used
// directly: reading a value takes no call across the boundary and, unless extra validations are
// registered, no reference.

namespace NPOSValidatorImpl {

using NPOSObjectImpl::Array;
using NPOSObjectImpl::AtomText;
using NPOSObjectImpl::BaseObject;
using NPOSObjectImpl::BinData;
using NPOSObjectImpl::CPOSObject;
using NPOSObjectImpl::Dict;
using NPOSObjectImpl::DictEntry;
using NPOSObjectImpl::DictTree;
using NPOSObjectImpl::Number;
using NPOSObjectImpl::POSException;
using NPOSObjectImpl::RawPointer;
using NPOSObjectImpl::SortableStringAtom;
using NPOSObjectImpl::SortableText;
using NPOSObjectImpl::String;
using NPOSObjectImpl::TextPrefix;
using NPOSObjectImpl::UnicodeString;

static_assert(
    KAP_T_MT::POSCoverEveryKind<Number, String, UnicodeString, BinData, RawPointer, Array, Dict>(),
    "not every kind of property object can be validated");

// The wrapper whose failed downcast says what an object is not. Only for the kinds that attributes
// of a schema have.
template <class Kind>
struct TWrapper;
template <>
struct TWrapper<Number> : KAP_T_MT::CPOSNumber {};
template <>
struct TWrapper<String> : KAP_T_MT::CPOSString {};
template <>
struct TWrapper<Array> : KAP_T_MT::CPOSArray {};
template <>
struct TWrapper<Dict> : KAP_T_MT::CPOSDict {};

// The wrappers' downcast without crossing the boundary: POSException for another kind.
template <class Kind>
const Kind& Downcast(const POSObject* object) {
  const Kind* instance = Kind::GetInstanceNoThrow(object);
  if (!instance) [[unlikely]]
    throw POSException(TWrapper<Kind>::kDowncastFailed);
  return *instance;
}

// The element; POSException for an empty slot and past the end.
inline POSObject* ElementAt(const Array& array, std::uint32_t index) {
  POSObject* const element = array.Find(index);
  if (!element) [[unlikely]]
    throw POSException("CPOSArray::GetAt subscript failed");
  return element;
}

// An object of a schema that a check goes on using while callbacks run, which may take it out of
// the schema. Holds a reference if it `mustKeep`; where no callback can run, that would be waste.
template <class Kind>
class Kept {
 public:
  Kept() noexcept = default;
  // POSException for an object of another kind.
  Kept(POSObject* object, bool mustKeep)
      : fInstance(&Downcast<Kind>(object)),
        fReference(BaseObject::Share(mustKeep ? object : nullptr)) {}

  const Kind* Get() const noexcept { return fInstance; }
  const Kind* operator->() const noexcept { return fInstance; }
  const Kind& operator*() const noexcept { return *fInstance; }
  explicit operator bool() const noexcept { return fInstance != nullptr; }

 private:
  const Kind* fInstance = nullptr;
  CPOSObject fReference;
};

}  // namespace NPOSValidatorImpl
