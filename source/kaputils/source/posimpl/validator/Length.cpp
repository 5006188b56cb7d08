#include "posimpl/validator/Length.h"

#include <algorithm>
#include <limits>

namespace NPOSValidatorImpl {

namespace {

// The bound as it is printed: without its fraction, or else the nearest that an int can hold.
int Printed(double bound) noexcept {
  using Limits = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<double>(bound, Limits::min(), Limits::max()));
}

ErrorCount Fail(const TypeCheck& check, const char* message, double bound) {
  return check.Fail([=] { return FormatIntoPOSString(message, Printed(bound)); });
}

}  // namespace

ErrorCount CheckLength(const TypeCheck& check, std::size_t length, const LengthMessages& messages) {
  const auto measured = static_cast<double>(length);
  const std::optional<double> minimum = check.fDefinition.GetNumber(&Keywords::MinLen);
  ErrorCount count = 0;
  if (minimum && *minimum > measured) count += Fail(check, messages.fBelow, *minimum);
  const std::optional<double> maximum = check.fDefinition.GetNumber(&Keywords::MaxLen);
  if (maximum && measured > *maximum) count += Fail(check, messages.fAbove, *maximum);
  return count;
}

}  // namespace NPOSValidatorImpl
