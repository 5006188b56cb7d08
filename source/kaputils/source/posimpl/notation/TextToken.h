#pragma once

#include <cstddef>

namespace NPOSObjectImpl {

// The tokens of the text notation, read from a cursor into storage of their own, whose size is the
// reason for their limits. Each reader expects the cursor on the token's first character and leaves
// it behind the token, also when the token is faulty; a literal that the text does not close leaves
// it at the end. Faults are CFTParseErrors.

// A word, or a parenthesised string, in which a backslash takes the next character literally.
class StringToken {
 public:
  static constexpr std::size_t kMaxLength =
      100;  // between the parentheses as written, backslashes included

  const char* Read(const char*& cursor);  // the text; lives as long as the token

 private:
  const char* ReadWord(const char*& cursor);
  const char* ReadParenthesised(const char*& cursor);

  char fText[kMaxLength + 1];
};

// Hexadecimal digits between grave accents, four for each unit.
class UnicodeToken {
 public:
  static constexpr std::size_t kMaxLength = 401;  // digits

  const unsigned short* Read(
      const char*& cursor);  // ends in a zero unit; lives as long as the token

 private:
  unsigned short fUnits[kMaxLength / 4 + 1];
};

// The longest part that is a decimal number, 0 when there is none: what strtod gives in the C
// locale, whatever the process's locale is.
double ReadNumberToken(const char*& cursor);
constexpr std::ptrdiff_t kMaxNumberLength = 100;

}  // namespace NPOSObjectImpl
