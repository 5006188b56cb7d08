// SPDX-License-Identifier: MIT

// The categories that combine types.

#include "posimpl/validator/Checks.h"

namespace NPOSValidatorImpl {

// The messages of the alternatives count only when none holds.
ErrorCount CheckUnion(const TypeCheck& check) {
  const Kept<Array> set = check.fDefinition.GetKept<Array>(Attribute::kSet);
  const ErrorList::Mark begin = check.fErrors.End();
  for (std::uint32_t i = 0; set && i < set->Count(); ++i) {
    const Kept<String> type = check.TypeAt(*set, i);
    const auto context = [&] { return FormatIntoPOSString("Trying %s:", type->Get()); };
    if (check.CheckPart(check.fObject, type->Get(), context) == 0) {
      check.fErrors.CutTo(begin);
      return 0;
    }
  }
  AppendErrorsInContext(check.fErrors, begin,
                        [] { return FormatIntoPOSString("Not a valid union type:"); });
  return 1;
}

ErrorCount CheckIntersection(const TypeCheck& check) {
  const Kept<Array> set = check.fDefinition.GetKept<Array>(Attribute::kSet);
  ErrorCount count = 0;
  for (std::uint32_t i = 0; set && i < set->Count(); ++i) {
    const Kept<String> type = check.TypeAt(*set, i);
    count += check.CheckPart(check.fObject, type->Get(), [&] {
      return FormatIntoPOSString("Failed intersection type %s:", type->Get());
    });
  }
  return count;
}

}  // namespace NPOSValidatorImpl
