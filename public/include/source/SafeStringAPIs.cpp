// SPDX-License-Identifier: MIT
#include "SafeStringAPIs.h"

// NOLINTNEXTLINE(modernize-deprecated-headers): strnlen is POSIX and not part of <cstring>
#include <string.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cwchar>
#include <limits>

namespace KAP_T_MT {
namespace {

constexpr int kInvalid = -1;
constexpr int kTooSmall = -2;
constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

// vsnprintf returns an int, and POSIX lets it fail for a larger limit.
constexpr std::size_t kLargestLimit = INT_MAX;

// Deliberately ignores the size: a buffer of size 0 is emptied too.
void Empty(char* buffer) {
  if (buffer) *buffer = 0;
}

int Reject(char* buffer, int status) {
  Empty(buffer);
  return status;
}

// Writes at most `room` bytes and a terminator after them. False: the first `count` bytes of the
// source do not fit. Reads the source no further than needed to decide that: it may have no
// terminator.
bool CopyInto(char* destination, std::size_t room, const char* source, std::size_t count) {
  const std::size_t wanted = strnlen_safe(source, count > room ? room + 1 : count);
  const std::size_t copied = std::min(wanted, room);
  memcpy(destination, source, copied);
  destination[copied] = 0;
  return wanted == copied;
}

bool IsUsable(const char* buffer, std::size_t size, const void* other) {
  return buffer && size != 0 && other;
}

int Append(char* destination, std::size_t size, const char* source, std::size_t count) {
  if (!IsUsable(destination, size, source)) return Reject(destination, kInvalid);
  const std::size_t used = strnlen_safe(destination, size);
  if (used == size) return Reject(destination, kInvalid);
  return CopyInto(destination + used, size - used - 1, source, count) ? 0 : kTooSmall;
}

std::size_t CountDigits(std::uint64_t magnitude, unsigned radix) {
  std::size_t digits = 1;
  while ((magnitude /= radix) != 0) ++digits;
  return digits;
}

// Writes the least significant digit first and the sign last, then reverses the text.
void WriteDigits(std::uint64_t magnitude, bool negative, char* buffer, unsigned radix) {
  char* end = buffer;
  do {
    *end++ = "0123456789abcdefghijklmnopqrstuvwxyz"[magnitude % radix];
    magnitude /= radix;
  } while (magnitude != 0);
  if (negative) *end++ = '-';
  *end = 0;
  std::reverse(buffer, end);
}

int WriteNumber(std::uint64_t magnitude, bool negative, char* buffer, std::size_t size, int radix) {
  if (!buffer || radix < 2 || radix > 36) return kInvalid;
  const auto base = static_cast<unsigned>(radix);
  // Deliberate: a positive number needs room for a sign too.
  const std::size_t demand = magnitude == 0 ? 2 : CountDigits(magnitude, base) + 2;
  if (size < demand) return Reject(buffer, kTooSmall);
  WriteDigits(magnitude, negative, buffer, base);
  return 0;
}

// `Bits` is the unsigned type as wide as the value; it determines the digits of a negative value in
// a radix other than 10.
template <class Bits, class Value>
int WriteSigned(Value value, char* buffer, std::size_t size, int radix) {
  static_assert(sizeof(Bits) == sizeof(Value));
  const bool negative = value < 0 && radix == 10;
  const auto bits = static_cast<Bits>(value);
  // Negated as unsigned, because the smallest value has no positive counterpart.
  return WriteNumber(negative ? Bits{0} - bits : bits, negative, buffer, size, radix);
}

}  // namespace

std::size_t strnlen_safe(const char* text, std::size_t maximum) {
  return text ? strnlen(text, maximum) : 0;
}

void strcpy_safe(char* destination, std::size_t size, const char* source) {
  strncpy_safe(destination, size, source, kUnlimited);
}

void strncpy_safe(char* destination, std::size_t size, const char* source, std::size_t count) {
  if (!IsUsable(destination, size, source)) return Empty(destination);
  CopyInto(destination, size - 1, source, count);
}

int strcat_safe(char* destination, std::size_t size, const char* source) {
  if (!destination && size == 0) return 0;
  return Append(destination, size, source, kUnlimited);
}

int strncat_safe(char* destination, std::size_t size, const char* source, std::size_t count) {
  if (!destination && size == 0 && count == 0) return 0;
  return Append(destination, size, source, count);
}

char* strchr_safe(const char* text, std::size_t maximum, int character) {
  if (!text || maximum == 0) return nullptr;
  const std::size_t length = strnlen_safe(text, maximum);
  const std::size_t range = length < maximum ? length + 1 : maximum;
  // One function for const and non-const text, as in C.
  return static_cast<char*>(const_cast<void*>(memchr(text, character, range)));
}

char* strtok_safe(char* text, std::size_t size, const char* delimiters, char** context) {
  if (size == 0) return nullptr;
  // Deliberate, and before the other arguments are checked: no scan below can leave the buffer.
  if (text) text[size - 1] = 0;
  if (!delimiters || !context) return nullptr;

  char* token = text ? text : *context;
  if (!token) return nullptr;
  token += strspn(token, delimiters);
  char* end = token + strcspn(token, delimiters);
  *context = *end != 0 ? end + 1 : end;
  *end = 0;
  return *token != 0 ? token : nullptr;
}

int printf_safe(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = vprintf_safe(format, arguments);
  va_end(arguments);
  return result;
}

int vprintf_safe(const char* format, std::va_list arguments) {
  return format ? std::vprintf(format, arguments) : kInvalid;
}

int wprintf_safe(const wchar_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = vwprintf_safe(format, arguments);
  va_end(arguments);
  return result;
}

int vwprintf_safe(const wchar_t* format, std::va_list arguments) {
  return format ? std::vwprintf(format, arguments) : kInvalid;
}

int sprintf_safe(char* buffer, std::size_t size, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = vsprintf_safe(buffer, size, format, arguments);
  va_end(arguments);
  return result;
}

int vsprintf_safe(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  if (!IsUsable(buffer, size, format)) return Reject(buffer, kInvalid);
  const std::size_t limit = std::min(size, kLargestLimit);
  const int length = std::vsnprintf(buffer, limit, format, arguments);
  if (length < 0) return Reject(buffer, kInvalid);
  return static_cast<std::size_t>(length) < limit ? length : kTooSmall;
}

int snprintf_safe(char* buffer, std::size_t size, std::size_t count, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = vsnprintf_safe(buffer, size, count, format, arguments);
  va_end(arguments);
  return result;
}

int vsnprintf_safe(char* buffer, std::size_t size, std::size_t count, const char* format,
                   std::va_list arguments) {
  if (!buffer && size == 0 && count == 0) return 0;
  if (!IsUsable(buffer, size, format)) return Reject(buffer, kInvalid);
  if (count == 0) {
    Empty(buffer);
    return 0;
  }
  // count + 1 is computed only where it cannot wrap.
  const std::size_t limit = std::min(count < size ? count + 1 : size, kLargestLimit);
  const int length = std::vsnprintf(buffer, limit, format, arguments);
  // Deliberate: the last usable byte is 0 even after a short text.
  buffer[limit - 1] = 0;
  if (length < 0) return Reject(buffer, kInvalid);
  return count < size || static_cast<std::size_t>(length) < size ? length : kTooSmall;
}

int _itoa_safe(std::int32_t value, char* buffer, std::size_t size, int radix) {
  return WriteSigned<std::uint32_t>(value, buffer, size, radix);
}

int _ltoa_safe(long value, char* buffer, std::size_t size, int radix) {
  return WriteSigned<unsigned long>(value, buffer, size, radix);
}

int _i64toa_safe(std::int64_t value, char* buffer, std::size_t size, int radix) {
  return WriteSigned<std::uint64_t>(value, buffer, size, radix);
}

int _ultoa_safe(unsigned long value, char* buffer, std::size_t size, int radix) {
  return WriteNumber(value, false, buffer, size, radix);
}

int _ui64toa_safe(std::uint64_t value, char* buffer, std::size_t size, int radix) {
  return WriteNumber(value, false, buffer, size, radix);
}

char* gets_safe(char* buffer, std::size_t size) {
  if (!buffer || size == 0) {
    Empty(buffer);
    return nullptr;
  }
  std::size_t stored = 0;
  for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar()) {
    if (stored < size) buffer[stored++] = static_cast<char>(c);
  }
  // Deliberate: a line that fills the buffer would have to be truncated, so it is discarded.
  buffer[stored < size ? stored : 0] = 0;
  return buffer;
}

}  // namespace KAP_T_MT
