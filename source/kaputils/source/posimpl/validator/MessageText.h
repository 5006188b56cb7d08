#pragma once

#include <cstddef>

#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// Room for a message and its terminator. A longer message is cut to fit.
inline constexpr std::size_t kMessageSize = 1024;

// A property string of the formatted text. Numbers are written as in the C locale. Raises what the
// host refuses.
[[gnu::format(printf, 1, 2)]] CPOSObject FormatIntoPOSString(const char* format, ...);

// The text of a property string, which lives as long as that.
const char* TextOfPOSString(const CPOSObject& string);

}  // namespace NPOSValidatorImpl
