// The categories of strings, binary data and references.

#include <cstring>

#include "posimpl/validator/Category.h"
#include "posimpl/validator/Length.h"

namespace NPOSValidatorImpl {

namespace {

// Binary data has no messages of its own, deliberately.
constexpr LengthMessages kByteLength = {"String length below mininum value %d",
                                        "String length above maximum value %d"};
constexpr LengthMessages kUnicodeLength = {"Unicode String length below mininum value %d",
                                           "Unicode String length above maximum value %d"};

ErrorCount CheckIllegalChars(const TypeCheck& check, const char* text, std::size_t length) {
  const char* illegal = check.fDefinition.GetText(&Keywords::IllegalChars);
  if (!illegal || std::strcspn(text, illegal) == length) return 0;
  return check.Fail(
      [=] { return FormatIntoPOSString("String contains illegal characters in '%s'", illegal); });
}

// An entry that is no string is an error only when it is reached.
ErrorCount CheckOneOf(const TypeCheck& check, AtomText text, const char* message) {
  const auto* entries = check.fDefinition.Get<Array>(&Keywords::OneOf);
  if (!entries) return 0;
  for (std::uint32_t i = 0; i < entries->Count(); ++i) {
    if (TextAt(*entries, i) == text) return 0;
  }
  return check.Fail(message);
}

}  // namespace

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
