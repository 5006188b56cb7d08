// SPDX-License-Identifier: MIT
#include "posimpl/validator/Intrinsics.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

namespace NPOSValidatorImpl {

namespace {

const char* AnyFault(const Subject& /*object*/, const Keywords& /*words*/) { return nullptr; }

const char* BoolFault(const Subject& object, const Keywords& words) {
  if (const Number* number = object.As<Number>()) {
    const bool isBool = number->Get() == 0.0 || number->Get() == 1.0;
    return isBool ? nullptr : "BOOL was a number unequal to zero or one";
  }
  if (const AtomText text = object.Text()) {
    const bool isBool = words.True.Is(text) || words.False.Is(text);
    return isBool ? nullptr : "BOOL was not a valid string (true/false)";
  }
  return "Expected BOOL was of invalid type";
}

// Deliberate: a whole number outside 32 bits is rejected.
bool IsWhole(double value) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  return value >= Limits::min() && value <= Limits::max() &&
         value == static_cast<std::int32_t>(value);
}

const char* IntFault(const Subject& object, const Keywords& /*words*/) {
  const Number* number = object.As<Number>();
  if (!number) return "Expected INT was of invalid type";
  return IsWhole(number->Get()) ? nullptr : "INT was not a whole number";
}

const char* StringFault(const Subject& object, const Keywords& /*words*/) {
  return object.Text() ? nullptr : "Expected STRING was of invalid type";
}

template <class Kind>
const char* FaultUnless(const Subject& object, const char* fault) {
  return object.As<Kind>() ? nullptr : fault;
}
const char* RealFault(const Subject& object, const Keywords& /*words*/) {
  return FaultUnless<Number>(object, "Expected REAL was of invalid type");
}
const char* UnicodeStringFault(const Subject& object, const Keywords& /*words*/) {
  return FaultUnless<UnicodeString>(object, "Expected UNICODESTRING was of invalid type");
}
const char* BinDataFault(const Subject& object, const Keywords& /*words*/) {
  return FaultUnless<BinData>(object, "Expected BINDATA was of invalid type");
}
const char* RawPtrFault(const Subject& object, const Keywords& /*words*/) {
  return FaultUnless<RawPointer>(object, "Expected RAWPTR was of invalid type");
}
const char* ObjRefFault(const Subject& object, const Keywords& /*words*/) {
  return FaultUnless<RawPointer>(object, "Expected OBJREF was of invalid type");
}

constexpr KAP_T_MT::POSType kSeveral = {};

constexpr Intrinsic kIntrinsics[] = {
    {&Keywords::Any, &AnyFault, kSeveral},
    {&Keywords::Bool, &BoolFault, kSeveral},
    {&Keywords::Int, &IntFault, KAP_T_MT::kPOSNumber},
    {&Keywords::Real, &RealFault, KAP_T_MT::kPOSNumber},
    {&Keywords::String, &StringFault, KAP_T_MT::kPOSString},
    {&Keywords::UnicodeString, &UnicodeStringFault, KAP_T_MT::kPOSUnicodeString},
    {&Keywords::BinData, &BinDataFault, KAP_T_MT::kPOSBinData},
    {&Keywords::RawPtr, &RawPtrFault, KAP_T_MT::kPOSRawPointer},
    {&Keywords::KAPObjRef, &ObjRefFault, KAP_T_MT::kPOSRawPointer},
    {&Keywords::QNBaseObjRef, &ObjRefFault, KAP_T_MT::kPOSRawPointer},
    {&Keywords::KAPErrorObjRef, &ObjRefFault, KAP_T_MT::kPOSRawPointer},
};

// Arrays and dictionaries always need a definition.
constexpr bool HasIntrinsicIfScalar(KAP_T_MT::POSType type) {
  return !KAP_T_MT::POSIsScalar(type) ||
         std::any_of(std::begin(kIntrinsics), std::end(kIntrinsics),
                     [=](const Intrinsic& intrinsic) { return intrinsic.fType == type; });
}
static_assert(std::all_of(std::begin(KAP_T_MT::kPOSTypes), std::end(KAP_T_MT::kPOSTypes),
                          &HasIntrinsicIfScalar),
              "kIntrinsics has no type for a scalar kind of POSType");

}  // namespace

const Intrinsic* Intrinsic::Find(AtomText name, const Keywords& words) noexcept {
  for (const Intrinsic& intrinsic : kIntrinsics) {
    if ((words.*intrinsic.fName).Is(name)) return &intrinsic;
  }
  return nullptr;
}

IntrinsicCheck CheckIntrinsic(AtomText typeName, const Subject& object, const Keywords& words,
                              ErrorList& errors) {
  const Intrinsic* intrinsic = Intrinsic::Find(typeName, words);
  if (!intrinsic) return IntrinsicCheck::kNotIntrinsic;
  const char* fault = intrinsic->fFault(object, words);
  if (!fault) return IntrinsicCheck::kValid;
  errors.Append(fault);
  return IntrinsicCheck::kInvalid;
}

}  // namespace NPOSValidatorImpl
