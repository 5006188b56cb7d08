// SPDX-License-Identifier: MIT
#include "posimpl/base/FetchAhead.h"
#include "posimpl/validator/Checks.h"

namespace NPOSValidatorImpl {

namespace {

// Deliberate: only the first message contains the bound.
constexpr LengthMessages kArrayLength = {"Array length below mininum value %d",
                                         "Array length above maximum value"};

// `typeAt` returns the type of the member at an index. A callback may change both arrays: each step
// takes them as they are then.
template <class TypeAt>
ErrorCount CheckMembers(const TypeCheck& check, const Array& members, TypeAt typeAt) {
  ErrorCount count = 0;
  for (std::uint32_t i = 0; i < members.Count(); ++i) {
    NPOSObjectImpl::FetchAhead(members.Elements(), i);
    const Subject member(ElementAt(members, i));
    const Kept<String>& type = typeAt(i);
    count += check.CheckPart(member, type->Get(),
                             [=] { return FormatIntoPOSString("[%d]:", static_cast<int>(i)); });
  }
  return count;
}

ErrorCount CheckOneByOne(const TypeCheck& check, const Array& members, const Array& types) {
  if (types.Count() != members.Count()) {
    return check.Fail("Heterogenous array object size did not match type array size");
  }
  return CheckMembers(check, members, [&](std::uint32_t i) { return check.TypeAt(types, i); });
}

// The two forms of "membertype". With neither of them, deliberately, no member is checked.
ErrorCount CheckMemberType(const TypeCheck& check, const Array& members) {
  POSObject* const attribute = check.fDefinition.Find(Attribute::kMemberType);
  if (!attribute) return 0;
  const Subject type(attribute);
  if (type.Text()) {
    const Kept<String> ofAll(attribute, check.fChecker.MustKeep());
    return CheckMembers(check, members,
                        [&](std::uint32_t) -> const Kept<String>& { return ofAll; });
  }
  if (!type.As<Array>()) return 0;
  const Kept<Array> types(attribute, check.fChecker.MustKeep());
  return CheckOneByOne(check, members, *types);
}

}  // namespace

ErrorCount CheckArray(const TypeCheck& check) {
  const Array* array = check.fObject.As<Array>();
  if (!array) return check.Fail("Array object expected");
  const ErrorCount count = CheckLength(check, array->Count(), kArrayLength);
  return count + CheckMemberType(check, *array);
}

}  // namespace NPOSValidatorImpl
