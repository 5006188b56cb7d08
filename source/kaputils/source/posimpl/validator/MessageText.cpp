// SPDX-License-Identifier: MIT
#include "posimpl/validator/MessageText.h"

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is POSIX

#include <cstdarg>

#include "SafeStringAPIs.h"
#include "kap/KAPMemory.h"

namespace NPOSValidatorImpl {

namespace {

// Switches the thread to the C locale: the locale of the process may have a decimal comma.
class InCLocale {
 public:
  InCLocale() noexcept : fBefore(uselocale(CLocale())) {}
  ~InCLocale() { uselocale(fBefore); }
  InCLocale(const InCLocale&) = delete;
  InCLocale& operator=(const InCLocale&) = delete;

 private:
  // The C library has one object for the whole C locale: nothing is made that could fail, and
  // nothing must be freed.
  static locale_t CLocale() noexcept { return newlocale(LC_ALL_MASK, "C", nullptr); }

  const locale_t fBefore;
};

}  // namespace

CPOSObject FormatIntoPOSString(const char* format, ...) {
  const auto text = KAP_T_MT::KAPNewBlock<char>(kMessageSize);
  {
    const InCLocale inCLocale;
    std::va_list arguments;
    va_start(arguments, format);
    KAP_T_MT::vsprintf_safe(text.get(), kMessageSize, format, arguments);
    va_end(arguments);
  }
  return CPOSObject(String::NewContainer(text.get()), KAP_T_MT::KAPAdopt());
}

const char* TextOfPOSString(const POSObject* string) { return String::GetInstance(string).Get(); }

}  // namespace NPOSValidatorImpl
