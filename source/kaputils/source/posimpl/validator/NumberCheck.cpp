#include "posimpl/validator/Category.h"

namespace NPOSValidatorImpl {

namespace {

struct Bound {
  KeywordName fName;
  bool (*fIsViolated)(double bound, double value);  // false for what is no number
  const char* fMessage;
};

// "mininum" is deliberate: hosts compare messages.
constexpr Bound kBounds[] = {
    {&Keywords::Min, [](double bound, double value) { return bound > value; },
     "Number below mininum value %f"},
    {&Keywords::Max, [](double bound, double value) { return value > bound; },
     "Number above maximum value %f"},
    {&Keywords::MinExcl, [](double bound, double value) { return bound >= value; },
     "Number below mininum value %f (exclusive)"},
    {&Keywords::MaxExcl, [](double bound, double value) { return value >= bound; },
     "Number above maximum value %f (exclusive)"},
};

}  // namespace

ErrorCount CheckNumber(const TypeCheck& check) {
  if (!check.IsIntrinsic()) return 1;
  const double value = check.fObject.As<Number>()->Get();
  ErrorCount count = 0;
  for (const Bound& bound : kBounds) {
    const std::optional<double> limit = check.fDefinition.GetNumber(bound.fName);
    if (limit && bound.fIsViolated(*limit, value)) {
      count += check.Fail([&] { return FormatIntoPOSString(bound.fMessage, *limit); });
    }
  }
  return count;
}

}  // namespace NPOSValidatorImpl
