// SPDX-License-Identifier: MIT

// Bounded replacements for the string and formatting functions of the standard library.
//
//   char name[32];
//   strcpy_safe(name, sizeof name, given);                           // cut if need be
//   if (strcat_safe(name, sizeof name, ".txt") == -2) UseLongName();
//
// Rules of the whole family; each function's comment says where it differs:
// - Sizes count bytes, including the terminator; `size` is the size of the destination buffer.
// - Nothing is written past the end of the buffer, and what is written is terminated. One exception
//   is deliberate: a non-null destination of size 0 gets its first byte set to 0, so that a caller
//   who confuses sizes never reads an unterminated string.
// - A status is 0 for success, -1 for invalid arguments, -2 for a destination that is too small.
// - Source and destination must not overlap.
// - Nothing is allocated and nothing throws.
// - Threads: the functions have no state; calls on different buffers need no lock. The functions on
//   standard input and output share those streams.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The number of bytes before the terminator, at most `maximum`. 0 for a null text.
std::size_t strnlen_safe(const char* text, std::size_t maximum);

// Copies `source`, truncated to size - 1 bytes. A null source empties the destination.
void strcpy_safe(char* destination, std::size_t size, const char* source);

// As strcpy_safe, but copies at most `count` bytes of the source. Never pads.
void strncpy_safe(char* destination, std::size_t size, const char* source, std::size_t count);

// Appends `source`. -1: size 0, a null pointer, or no terminator within the first `size` bytes; a
// non-null destination is then empty. -2: as much as fits is appended. A null destination of size 0
// returns 0.
int strcat_safe(char* destination, std::size_t size, const char* source);

// As strcat_safe, but appends at most `count` bytes of the source. A count of 0 appends nothing;
// the other arguments must still be valid, except that a null destination of size 0 returns 0. A
// null destination of size 0 with any other count returns -1.
int strncat_safe(char* destination, std::size_t size, const char* source, std::size_t count);

// The first occurrence of `character`, converted to a byte, within the first `maximum` bytes and up
// to the terminator, which a character of 0 finds. Null when there is none, or for a null text. The
// result points into `text` and may be written through if `text` may.
char* strchr_safe(const char* text, std::size_t maximum, int character);

// The next token of a text, re-entrant: the first call passes the text, later calls pass null.
//
//   char* context = nullptr;
//   for (char* token = strtok_safe(line, size, " ,", &context); token;
//        token = strtok_safe(nullptr, size, " ,", &context)) ...
//
// Changes the text: the byte after each token becomes 0 and, deliberately, so does the byte at
// size - 1 of a text passed in, so that no scan can leave the buffer.
// `size` is the size of the buffer; in later calls any value but 0 will do. `context` holds the
// position between calls. `delimiters` is a set of bytes, which may differ from call to call.
// Null: no token left, size 0, null delimiters or context, or neither text nor position.
char* strtok_safe(char* text, std::size_t size, const char* delimiters, char** context);

// Format to standard output. Return what the standard functions return: the number of characters
// written, negative after a failure. -1 for a null format.
[[gnu::format(printf, 1, 2)]] int printf_safe(const char* format, ...);
[[gnu::format(printf, 1, 0)]] int vprintf_safe(const char* format, std::va_list arguments);
int wprintf_safe(const wchar_t* format, ...);
int vwprintf_safe(const wchar_t* format, std::va_list arguments);

// Format into `buffer`. Return the length of the text when it fits with its terminator.
// -1: size 0, a null pointer, or a text that cannot be formatted (such as a wide character that the
// locale cannot encode); a non-null buffer is then empty. -2: the buffer holds the truncated text.
// At most 2147483647 bytes of the buffer are used.
[[gnu::format(printf, 3, 4)]] int sprintf_safe(char* buffer, std::size_t size, const char* format,
                                               ...);
[[gnu::format(printf, 3, 0)]] int vsprintf_safe(char* buffer, std::size_t size, const char* format,
                                                std::va_list arguments);

// As sprintf_safe, but keep at most `count` bytes of the text; a count of 0 empties the buffer and
// returns 0. Return the length of the whole text: truncation at `count` is not an error, so with
// count < size the result may exceed the length of the buffer's text. -2: truncated at the size.
// A null buffer with size and count 0 returns 0.
[[gnu::format(printf, 4, 5)]] int snprintf_safe(char* buffer, std::size_t size, std::size_t count,
                                                const char* format, ...);
[[gnu::format(printf, 4, 0)]] int vsnprintf_safe(char* buffer, std::size_t size, std::size_t count,
                                                 const char* format, std::va_list arguments);

// Write a number with the digits 0 to 9 and a to z. Only radix 10 writes a sign; any other radix
// writes a negative value as the unsigned number with the same bits and width. -1: a null buffer or
// a radix outside 2 to 36; nothing is written. -2: the buffer is too small, and is then empty (a
// buffer of size 0 gets its first byte set to 0). Deliberate: a positive number needs one byte more
// than its text and terminator; a negative number and 0 do not (test: SafeBuffer.NumberSizes).
int _itoa_safe(std::int32_t value, char* buffer, std::size_t size, int radix);
int _ltoa_safe(long value, char* buffer, std::size_t size, int radix);
int _i64toa_safe(std::int64_t value, char* buffer, std::size_t size, int radix);
int _ultoa_safe(unsigned long value, char* buffer, std::size_t size, int radix);
int _ui64toa_safe(std::uint64_t value, char* buffer, std::size_t size, int radix);

// Reads one line from standard input and drops its newline. Deliberate: a line of `size` or more
// bytes is read to its end and becomes the empty string; it is never truncated (test:
// SafeInput.Lines). The end of the input or a read error ends the line; before the first byte, the
// line is empty. Returns the buffer. Null, with nothing read: a null buffer or size 0.
char* gets_safe(char* buffer, std::size_t size);

}  // namespace KAP_T_MT
