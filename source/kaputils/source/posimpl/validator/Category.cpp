// SPDX-License-Identifier: MIT
#include "posimpl/validator/Category.h"

#include <algorithm>

#include "kap/TOQException.h"
#include "posimpl/validator/Checks.h"

namespace NPOSValidatorImpl {

namespace {

constexpr KAP_T_MT::POSType kAny = {};

constexpr Category kCategories[] = {
    {&Keywords::Int, &CheckNumber, KAP_T_MT::kPOSNumber},
    {&Keywords::Real, &CheckNumber, KAP_T_MT::kPOSNumber},
    {&Keywords::String, &CheckString, KAP_T_MT::kPOSString},
    {&Keywords::UnicodeString, &CheckUnicodeString, KAP_T_MT::kPOSUnicodeString},
    {&Keywords::BinData, &CheckBinData, KAP_T_MT::kPOSBinData},
    {&Keywords::RawPtr, &CheckReference, KAP_T_MT::kPOSRawPointer},
    {&Keywords::KAPObjRef, &CheckReference, KAP_T_MT::kPOSRawPointer},
    {&Keywords::QNBaseObjRef, &CheckReference, KAP_T_MT::kPOSRawPointer},
    {&Keywords::KAPErrorObjRef, &CheckReference, KAP_T_MT::kPOSRawPointer},
    {&Keywords::Array, &CheckArray, KAP_T_MT::kPOSArray},
    {&Keywords::Dict, &CheckDict, KAP_T_MT::kPOSDict},
    {&Keywords::Union, &CheckUnion, kAny},
    {&Keywords::Intersection, &CheckIntersection, kAny},
};

constexpr bool HasCategory(KAP_T_MT::POSType type) {
  return std::any_of(std::begin(kCategories), std::end(kCategories),
                     [=](const Category& category) { return category.fType == type; });
}
static_assert(std::all_of(std::begin(KAP_T_MT::kPOSTypes), std::end(KAP_T_MT::kPOSTypes),
                          &HasCategory),
              "kCategories has no category for a kind of POSType");

}  // namespace

const Category& Category::Get(AtomText name, const Keywords& words) {
  for (const Category& category : kCategories) {
    if ((words.*category.fName).Is(name)) return category;
  }
  throw KAP_T_MT::TOQException("Unknown category in schema");
}

}  // namespace NPOSValidatorImpl
