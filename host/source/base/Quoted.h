// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace KAPHost {

// In quotation marks, with escapes for all but ASCII, at most 60 bytes of it.
std::string Quoted(const char* text);

// The value of a byte in hexadecimal.
std::string TwoDigits(unsigned char byte);

}  // namespace KAPHost
