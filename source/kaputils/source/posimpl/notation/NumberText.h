// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace NPOSObjectImpl {

// Numbers as texts, the same in every locale.

constexpr std::size_t kNumberTextSize = 64;  // holds every number that WriteNumber writes

// Writes what "%.32g" writes in the C locale, without a terminator; returns the end. `text` has room
// for kNumberTextSize characters, all of which may be written.
char* WriteNumber(double value, char* text) noexcept;

// What strtod returns in the C locale: the value of the longest part that is a number, 0 when there
// is none, infinite or 0 with its sign when the value is too large or too small.
double ParseNumber(const char* begin, const char* end) noexcept;

}  // namespace NPOSObjectImpl
