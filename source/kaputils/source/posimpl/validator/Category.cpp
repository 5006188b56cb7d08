#include "posimpl/validator/Category.h"

#include "kap/TOQException.h"

namespace NPOSValidatorImpl {

namespace {

constexpr Category kCategories[] = {
    {&Keywords::Int, &CheckNumber},
    {&Keywords::Real, &CheckNumber},
    {&Keywords::String, &CheckString},
    {&Keywords::UnicodeString, &CheckUnicodeString},
    {&Keywords::BinData, &CheckBinData},
    {&Keywords::RawPtr, &CheckReference},
    {&Keywords::KAPObjRef, &CheckReference},
    {&Keywords::QNBaseObjRef, &CheckReference},
    {&Keywords::KAPErrorObjRef, &CheckReference},
    {&Keywords::Array, &CheckArray},
    {&Keywords::Dict, &CheckDict},
    {&Keywords::Union, &CheckUnion},
    {&Keywords::Intersection, &CheckIntersection},
};

}  // namespace

const Category& Category::Get(AtomText name, const Keywords& words) {
  for (const Category& category : kCategories) {
    if ((words.*category.fName).Is(name)) return category;
  }
  throw KAP_T_MT::TOQException("Unknown category in schema");
}

}  // namespace NPOSValidatorImpl
