// Bounded replacements for the string and formatting calls of the standard library.
//
// Rules of the whole family; what a function does differently is said beside it:
// - Sizes count bytes, the terminator included; `size` is the size of the destination buffer.
// - Nothing is written beyond the buffer, and what is written is terminated. One exception is
//   deliberate: a destination that is not null but has size 0 gets its first byte set to 0, so a
//   caller that confuses its sizes still never reads an unterminated text.
// - A status is 0 for success, -1 for invalid arguments, -2 for a destination that is too small.
// - Source and destination must not overlap. Nothing is allocated, nothing is thrown.
// - Threads: no state of their own; calls on different buffers need no lock. The functions on
//   standard input and output share these streams.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The number of bytes before the terminator, at most `maximum`. 0 for a null text.
std::size_t strnlen_safe(const char* text, std::size_t maximum);

// Copies `source`, cut to size - 1 bytes. A null source empties the destination.
void strcpy_safe(char* destination, std::size_t size, const char* source);

// As strcpy_safe, but copies at most `count` bytes of the source; never pads.
void strncpy_safe(char* destination, std::size_t size, const char* source, std::size_t count);

// Appends `source`.
// -1: size 0, a null pointer, or no terminator within the first `size` bytes; a destination that
// is not null is then empty. -2: what fits was appended. A null destination of size 0 gives 0.
int strcat_safe(char* destination, std::size_t size, const char* source);

// As strcat_safe, but appends at most `count` bytes of the source. A count of 0 changes nothing,
// yet the other arguments must be valid; only a null destination of size 0 then gives 0.
// A null destination of size 0 with any other count gives -1.
int strncat_safe(char* destination, std::size_t size, const char* source, std::size_t count);

// The first place of `character`, taken as a byte, among the first `maximum` bytes and no further
// than the terminator, which 0 finds. Null when there is none, or for a null text.
// The result points into `text` and may be written through if that text may.
char* strchr_safe(const char* text, std::size_t maximum, int character);

// The next token of a text, re-entrant: the first call passes the text, the others null.
// Cuts the text in place: the byte behind each token becomes 0, and, deliberately, so does the
// byte at size - 1 of a text passed in, so that no scan can leave the buffer.
// `size` is that of the buffer; in the later calls any value but 0 does. `context` holds the
// position between the calls. `delimiters` is a set of bytes, which may differ at each call.
// Null: no token left, size 0, null delimiters or context, or neither text nor position.
char* strtok_safe(char* text, std::size_t size, const char* delimiters, char** context);

// Format to standard output. The result is that of the standard routine: the number of characters
// written, negative after a failure. -1 for a null format.
[[gnu::format(printf, 1, 2)]] int printf_safe(const char* format, ...);
[[gnu::format(printf, 1, 0)]] int vprintf_safe(const char* format, std::va_list arguments);
int wprintf_safe(const wchar_t* format, ...);
int vwprintf_safe(const wchar_t* format, std::va_list arguments);

// Format into `buffer`. The result is the length of the text, which fits with its terminator.
// -1: size 0, a null pointer, or the text cannot be made (a wide character that the locale cannot
// write, for one); a buffer that is not null is then empty. -2: the buffer holds the cut text.
// At most 2147483647 bytes of the buffer are used.
[[gnu::format(printf, 3, 4)]] int sprintf_safe(char* buffer, std::size_t size, const char* format,
                                               ...);
[[gnu::format(printf, 3, 0)]] int vsprintf_safe(char* buffer, std::size_t size, const char* format,
                                                std::va_list arguments);

// As sprintf_safe, but keeps at most `count` bytes of the text; a count of 0 empties the buffer and
// gives 0. The result is the length of the uncut text: cutting at `count` is no error, so with
// count < size it may exceed what the buffer holds. -2: cut by the size.
// A null buffer with size and count 0 gives 0.
[[gnu::format(printf, 4, 5)]] int snprintf_safe(char* buffer, std::size_t size, std::size_t count,
                                                const char* format, ...);
[[gnu::format(printf, 4, 0)]] int vsnprintf_safe(char* buffer, std::size_t size, std::size_t count,
                                                 const char* format, std::va_list arguments);

// Write a number with the digits 0 to 9 and a to z. Only radix 10 writes a sign; any other writes
// a negative value as the unsigned number of the same bits and width.
// -1: a null buffer or a radix outside 2 to 36; nothing is written. -2: the buffer is too small,
// and is then empty. Deliberate: a positive number needs one byte more than its text and
// terminator, a negative one and 0 do not.
int _itoa_safe(std::int32_t value, char* buffer, std::size_t size, int radix);
int _ltoa_safe(long value, char* buffer, std::size_t size, int radix);
int _i64toa_safe(std::int64_t value, char* buffer, std::size_t size, int radix);
int _ultoa_safe(unsigned long value, char* buffer, std::size_t size, int radix);
int _ui64toa_safe(std::uint64_t value, char* buffer, std::size_t size, int radix);

// Reads one line from standard input and drops its newline. Deliberate: a line of `size` or more
// bytes is read to its end and given as the empty text, never cut. The end of the input or a read
// error ends the line; before any byte that gives the empty text.
// The result is the buffer. Null, with nothing read: a null buffer or size 0.
char* gets_safe(char* buffer, std::size_t size);

}  // namespace KAP_T_MT
