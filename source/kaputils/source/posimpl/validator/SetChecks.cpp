// The categories that combine types.

#include "posimpl/validator/Checks.h"

namespace NPOSValidatorImpl {

// What the alternatives say is told only when none holds.
ErrorCount CheckUnion(const TypeCheck& check) {
  const auto* set = check.fDefinition.Get<Array>(&Keywords::Set);
  ErrorList collected = ErrorList::ForPartOf(check.fErrors);
  const TypeCheck attempt = {check.fChecker, check.fDefinition, check.fCategory, check.fObject,
                             collected};
  for (std::uint32_t i = 0; set && i < set->Count(); ++i) {
    const AtomText type = TextAt(*set, i);
    const auto context = [=] { return FormatIntoPOSString("Trying %s:", type); };
    if (attempt.CheckPart(check.fObject, type, context) == 0) return 0;
  }
  AppendErrorsInContext(check.fErrors, collected, "Not a valid union type:");
  return 1;
}

ErrorCount CheckIntersection(const TypeCheck& check) {
  const auto* set = check.fDefinition.Get<Array>(&Keywords::Set);
  ErrorCount count = 0;
  for (std::uint32_t i = 0; set && i < set->Count(); ++i) {
    const AtomText type = TextAt(*set, i);
    count += check.CheckPart(check.fObject, type, [=] {
      return FormatIntoPOSString("Failed intersection type %s:", type);
    });
  }
  return count;
}

}  // namespace NPOSValidatorImpl
