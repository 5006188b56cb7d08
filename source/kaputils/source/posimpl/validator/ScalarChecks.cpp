// SPDX-License-Identifier: MIT

// The categories of scalars.

#include <algorithm>
#include <cstring>
#include <limits>

#include "posimpl/validator/Checks.h"

namespace NPOSValidatorImpl {

namespace {

struct Bound {
  Attribute fName;
  bool (*fIsViolated)(double bound, double value);  // false for a NaN
  const char* fMessage;
};

// "mininum" is deliberate: programs compare messages.
constexpr Bound kBounds[] = {
    {Attribute::kMin, [](double bound, double value) { return bound > value; },
     "Number below mininum value %f"},
    {Attribute::kMax, [](double bound, double value) { return value > bound; },
     "Number above maximum value %f"},
    {Attribute::kMinExcl, [](double bound, double value) { return bound >= value; },
     "Number below mininum value %f (exclusive)"},
    {Attribute::kMaxExcl, [](double bound, double value) { return value >= bound; },
     "Number above maximum value %f (exclusive)"},
};

// The bound as it is printed: without its fraction, or else the nearest that an int can hold.
int Printed(double bound) noexcept {
  using Limits = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<double>(bound, Limits::min(), Limits::max()));
}

ErrorCount FailLength(const TypeCheck& check, const char* message, double bound) {
  return check.Fail([=] { return FormatIntoPOSString(message, Printed(bound)); });
}

// Binary data has no messages of its own, deliberately.
constexpr LengthMessages kByteLength = {"String length below mininum value %d",
                                        "String length above maximum value %d"};
constexpr LengthMessages kUnicodeLength = {"Unicode String length below mininum value %d",
                                           "Unicode String length above maximum value %d"};

ErrorCount CheckIllegalChars(const TypeCheck& check, const char* text, std::size_t length) {
  const char* illegal = check.fDefinition.GetText(Attribute::kIllegalChars);
  if (!illegal || std::strcspn(text, illegal) == length) return 0;
  return check.Fail(
      [=] { return FormatIntoPOSString("String contains illegal characters in '%s'", illegal); });
}

// An entry that is not a string is an error only when it is reached.
ErrorCount CheckOneOf(const TypeCheck& check, AtomText text, const char* message) {
  const auto* entries = check.fDefinition.Get<Array>(Attribute::kOneOf);
  if (!entries) return 0;
  for (std::uint32_t i = 0; i < entries->Count(); ++i) {
    if (Downcast<String>(ElementAt(*entries, i)).Get() == text) return 0;
  }
  return check.Fail(message);
}

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

ErrorCount CheckLength(const TypeCheck& check, std::size_t length, const LengthMessages& messages) {
  const auto measured = static_cast<double>(length);
  const std::optional<double> minimum = check.fDefinition.GetNumber(Attribute::kMinLen);
  ErrorCount count = 0;
  if (minimum && *minimum > measured) count += FailLength(check, messages.fBelow, *minimum);
  const std::optional<double> maximum = check.fDefinition.GetNumber(Attribute::kMaxLen);
  if (maximum && measured > *maximum) count += FailLength(check, messages.fAbove, *maximum);
  return count;
}

ErrorCount CheckString(const TypeCheck& check) {
  if (!check.IsIntrinsic()) return 1;
  const AtomText text = check.fObject.Text();
  const std::size_t length = std::strlen(text);
  ErrorCount count = CheckLength(check, length, kByteLength);
  count += CheckIllegalChars(check, text, length);
  count += CheckOneOf(check, text, "String is not one of the enumerated values");
  return count;
}

ErrorCount CheckUnicodeString(const TypeCheck& check) {
  if (!check.IsIntrinsic()) return 1;
  const auto* string = check.fObject.As<UnicodeString>();
  return CheckLength(check, string->Length(), kUnicodeLength);
}

ErrorCount CheckBinData(const TypeCheck& check) {
  if (!check.IsIntrinsic()) return 1;
  const auto* data = check.fObject.As<BinData>();
  ErrorCount count = CheckLength(check, data->GetSize(), kByteLength);
  count += CheckOneOf(check, data->GetTypeName(), "TypeName is not one of the enumerated values");
  return count;
}

ErrorCount CheckReference(const TypeCheck& check) { return check.IsIntrinsic() ? 0 : 1; }

}  // namespace NPOSValidatorImpl
