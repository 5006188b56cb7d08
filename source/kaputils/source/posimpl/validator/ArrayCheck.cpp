#include "posimpl/base/FetchAhead.h"
#include "posimpl/validator/Checks.h"

namespace NPOSValidatorImpl {

namespace {

// That only one of them names its bound is deliberate.
constexpr LengthMessages kArrayLength = {"Array length below mininum value %d",
                                         "Array length above maximum value"};

// `typeAt` gives the type of the member at an index.
template <class TypeAt>
ErrorCount CheckMembers(const TypeCheck& check, const Array& members, TypeAt typeAt) {
  ErrorCount count = 0;
  for (std::uint32_t i = 0; i < members.Count(); ++i) {
    NPOSObjectImpl::FetchAhead(members.Elements(), i);
    const Subject member(ElementAt(members, i).Handle());
    count += check.CheckPart(member, typeAt(i),
                             [=] { return FormatIntoPOSString("[%d]:", static_cast<int>(i)); });
  }
  return count;
}

ErrorCount CheckOneByOne(const TypeCheck& check, const Array& members, const Array& types) {
  if (types.Count() != members.Count()) {
    return check.Fail("Heterogenous array object size did not match type array size");
  }
  return CheckMembers(check, members, [&](std::uint32_t i) { return TextAt(types, i); });
}

// The two forms of "membertype". With neither of them, deliberately, no member is checked.
ErrorCount CheckMemberType(const TypeCheck& check, const Array& members) {
  const CPOSObject* attribute = check.fDefinition.Find(&Keywords::MemberType);
  if (!attribute) return 0;
  const Subject type(attribute->Handle());
  if (const AtomText ofAll = type.Text()) {
    return CheckMembers(check, members, [=](std::uint32_t) { return ofAll; });
  }
  const Array* types = type.As<Array>();
  return types ? CheckOneByOne(check, members, *types) : 0;
}

}  // namespace

ErrorCount CheckArray(const TypeCheck& check) {
  const Array* array = check.fObject.As<Array>();
  if (!array) return check.Fail("Array object expected");
  const ErrorCount count = CheckLength(check, array->Count(), kArrayLength);
  return count + CheckMemberType(check, *array);
}

}  // namespace NPOSValidatorImpl
